// The log file: settings, cache, rotation, traps in its place, full disks, several processes.

#include <sys/mount.h>
#include <sys/resource.h>
#include <syslog.h>

#include "tests/support/rows.h"
#include "tests/support/scratch_test.h"
#include "tests/support/syslog_socket.h"
#include "tests/support/wrapped.h"
#include "util/file/unique_fd.h"

using namespace vesk;
using testsupport::rowsOf;
namespace fs = std::filesystem;

static std::function<void()> gAfterPoll;  // runs once
WRAPPED(int, poll, (pollfd * entries, nfds_t count, int timeout), [=] {
  const int rc = __real_poll(entries, count, timeout);
  if (gAfterPoll) std::exchange(gAfterPoll, nullptr)();
  return rc;
}())

namespace {

__attribute__((format(printf, 2, 3))) void write(FileLogging& file, const char* format, ...) {
  va_list args;
  va_start(args, format);
  file.log(format, args);
  va_end(args);
}

class LogFileTest : public testsupport::ScratchTest {
 protected:
  void TearDown() override {
    configure("");
    closelog();
    ScratchTest::TearDown();
  }

  // The plain text of a file, expanded if compressed.
  std::string plain(const fs::path& path) {
    if (path.extension() != ".gz") return path;
    EXPECT_EQ(system(("gzip -t " + path.string()).c_str()), 0);
    gunzip(path.c_str(), "/var/velmora/expanded");
    return "/var/velmora/expanded";
  }

  std::set<fs::path> paths() { return {fs::directory_iterator(m_dir), {}}; }

  // Logs to that file of the test's directory.
  void logTo(const std::string& name, int flushFrequency) {
    configure("logger.destination: " + in(name) +
              "\nlogger.file.flush.frequency: " + std::to_string(flushFrequency) + "\n");
  }

  // Counts each line in the files, and removes them.
  std::map<std::string, int> takeLines() {
    std::map<std::string, int> all;
    for (const fs::path& path : paths()) {
      for (const std::string& line : linesOf(plain(path))) ++all[line];
      fs::remove(path);
    }
    return all;
  }
};

TEST_F(LogFileTest, SettingsHaveTheirLimits) {
  for (const auto& [frequency, count, size, wanted] :
       rowsOf<4>("util/sink/rows.txt", "settings: flush frequency, count, size, what counts")) {
    const std::string stem = "\nlogger.file.";
    configure(stem + "flush.frequency: " + frequency + stem + "maxcount: " + count + stem +
              "maxsize: " + size);
    const auto read = FileLogging::Settings::read();
    std::ostringstream text;
    text << read.maxSize << " " << read.maxCount << " " << read.zipBackup << " " << read.flushFrequency << " "
         << read.cacheSize;
    EXPECT_EQ(text.str(), wanted);
  }
}

TEST_F(LogFileTest, LinesReachTheFileWhenAFlushIsDue) {
  const std::string path = in("log");
  FileLogging file;
  ASSERT_EQ(file.init(path.c_str(), {1 << 20, 5, false, 3, 3072}), 0);
  write(file, "one %d", 1);
  write(file, "%s", std::string(3000, 'x').c_str());
  EXPECT_EQ(linesOf(path), Texts());
  write(file, "three");
  EXPECT_EQ(linesOf(path), (Texts{"one 1", std::string(1023, 'x'), "three"}));
  EXPECT_EQ(modeOf(path) & 07777, 0666u);
  ASSERT_EQ(file.init(path.c_str(), {1 << 20, 5, false, 1, 0}), 0);
  write(file, "at once");
  EXPECT_EQ(linesOf(path).back(), "at once");
  file.destroy();
  write(file, "nowhere");
}

TEST_F(LogFileTest, RotationMovesTheOldFilesUp) {
  const std::string line(40000, 'x');
  for (const auto& [size, count, before, after] :
       rowsOf<4>("util/sink/rows.txt", "rotations: size, count, files before, files after")) {
    FileLogging::Settings settings{0, 0, count.back() == 'z', 1, 0};
    settings.maxSize = std::stoul(size), settings.maxCount = std::stoul(count);
    std::istringstream files(before);
    for (std::string name, text; std::getline(files, name, '=') && std::getline(files, text, ' ');)
      put(in(name), text);
    FileLogging file;
    file.init(in("log").c_str(), settings);
    write(file, "%s", line.c_str());
    std::string left;
    for (const fs::path& path : paths()) {
      std::string text = get(plain(path));
      if (text.find("]: " + line + "\n") != std::string::npos) text.erase(strlen("new"));
      left += path.filename().string() + "=" + text + " ";
      fs::remove(path);
    }
    EXPECT_EQ(left, after);
  }
}

// None of these may block, be written through, or change another file's mode.
TEST_F(LogFileTest, TrapsInPlaceOfTheFileAreRefused) {
  shell("mkfifo -m 666 fifo; mkdir directory; touch target; chmod 400 target; ln target 'hard link'");
  shell("ln -s fifo 'link to fifo'; ln -s target link");
  const bool owners = lchown(in("link").c_str(), testsupport::kOrdinaryUser, 0) == 0;
  const std::pair<const char*, int> rows[] = {{"fifo", ENXIO},       {"link to fifo", ENXIO},
                                              {"directory", EISDIR}, {"missing/log", ENOENT},
                                              {"hard link", EMLINK}, {"link", owners ? ELOOP : EMLINK}};
  FileLogging file;
  for (const auto& [name, error] : rows) EXPECT_EQ(file.init(in(name).c_str()), error) << name;
  const UniqueFd reader(open(in("fifo").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  EXPECT_EQ(file.init(in("fifo").c_str()), ENXIO) << "with a reader";
  EXPECT_EQ(modeOf(in("target")) & 07777, 0400u);
  EXPECT_FALSE(file.isOpened());
  fs::remove(in("hard link"));
  EXPECT_EQ(lchown(in("link").c_str(), 0, 0), 0);
  const int next = dup(0);
  close(next);
  EXPECT_EQ(file.init(in("link").c_str()), 0);
  EXPECT_EQ(fcntl(next, F_GETFD), FD_CLOEXEC);
}

TEST_F(LogFileTest, TheLogNeverBecomesAStandardStream) {
  testsupport::checkInChild([this] {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) ::close(stream);
    FileLogging file(in("log").c_str());
    if (!file.isOpened() || ::write(STDOUT_FILENO, "output", 6) >= 0) _exit(1);
  });
}

// As a container's /dev/stdout. If the reader does not read or is gone, lines go to syslog, and no signal
// ends the program.
TEST_F(LogFileTest, APipeThroughALinkOfRootGetsEachLineImmediately) {
  SyslogSocket syslogd;
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
  fs::create_symlink("/proc/self/fd/" + std::to_string(ends[1]), in("stdout"));
  configure("logger.destination: " + in("stdout") + "\n");
  const auto logger = Logger::GetLogger("pipe");
  VESK_LOG(logger, Info, "one");
  char text[4096] = "";
  EXPECT_GT(read(ends[0], text, sizeof text - 1), 0);
  EXPECT_NE(strstr(text, "]: INFO  pipe one\n"), nullptr) << text;
  VESK_LOG(logger, Info, "%s", std::string(200'000, 'x').c_str());
  VESK_LOG(logger, Info, "full");
  while (read(ends[0], text, sizeof text) > 0) {
  }
  gAfterPoll = [&] { close(ends[0]); };
  VESK_LOG(logger, Info, "lost");
  VESK_LOG(logger, Info, "gone");
  EXPECT_EQ(syslogd.texts(), (Texts{"INFO  pipe full", "INFO  pipe gone"}));
  configure("");
  close(ends[1]);
}

// Quoted text neither ends a line nor controls a terminal; a newline of the format is kept.
TEST_F(LogFileTest, OutsideTextIsEscapedInEverySink) {
  const std::pair<std::string, std::string> rows[] = {
      {"plain \t\x7f D\xc3\xa9j\xc3\xa0 \xe2\x82\xac \xf0\x9f\x94\x91 \\x1b", ""},
      {"a\nroot: fine\r\b\x1b[2J", "a\\x0aroot: fine\\x0d\\x08\\x1b[2J"},
      {"\xc2\x9b 31m \xe2\x80\xae \xe2\x81\xa6", "\\xc2\\x9b 31m \\xe2\\x80\\xae \\xe2\\x81\\xa6"},
      {"\x9b \xff \xc0\x8a \xed\xa0\x80 \xe2\x82", "\\x9b \\xff \\xc0\\x8a \\xed\\xa0\\x80 \\xe2\\x82"},
      {"\xf4\x8f\xbf\xbf\xf4\x90\x80\x80\n", "\xf4\x8f\xbf\xbf\\xf4\\x90\\x80\\x80\\x0a"},
  };
  const auto logger = Logger::GetLogger("client.x");
  const std::string file = "logger.destination: " + in("log") + "\nlogger.file.flush.frequency: ";
  for (const std::string& sink :
       {file + "1\n", file + "2\n", std::string(), std::string("logger.queue.size: 9\n")}) {
    SyslogSocket syslogd;
    configure(sink);
    if (sink.find("queue") != std::string::npos) Logger::startThread({});
    Texts expected;
    for (const auto& [text, escaped] : rows) {
      VESK_LOG(logger, Info, "%s.", text.c_str());
      expected.push_back("INFO  " + (escaped.empty() ? text : escaped) + ".");
    }
    VESK_LOG(logger, Info, "%s", "end\n");
    VESK_LOG(logger, Info, "%s\n", std::string(600, '\1').c_str());
    Logger::stopThread({});
    configure("");
    Texts written = fs::exists(in("log")) ? linesOf(in("log")) : syslogd.texts();
    fs::remove(in("log"));
    expected.push_back("INFO  end\\x0a");
    ASSERT_GT(written.size(), expected.size()) << sink;
    const std::string& last = written[expected.size()];
    EXPECT_EQ(last.compare(0, 14, "INFO  \\x01\\x01"), 0) << last;
    EXPECT_LE(last.size(), sink == file + "1\n" ? 3000u : 1023u);
    written.resize(expected.size());
    EXPECT_EQ(written, expected) << sink;
  }
}

TEST_F(LogFileTest, AFailingDestinationFallsBackToSyslogAndCanChange) {
  SyslogSocket syslogd;
  const auto logger = Logger::GetLogger("dest");
  const auto log = [&](const std::string& configuration, const char* text) {
    configure(here(configuration));
    VESK_LOG(logger, Info, "%s", text);
  };
  log("logger.destination: @/none/log", "first");
  EXPECT_EQ(syslogd.texts(),
            (Texts{"Could not open " + in("none/log") + ": No such file or directory", "INFO  dest first"}));
  log("logger.destination: @/log\nlogger.file.flush.frequency: 1", "second");
  EXPECT_EQ(linesOf(in("log")), Texts{"INFO  dest second"});
  log("logger.destination: file\nlogger.file.flush.frequency: 5", "third");
  EXPECT_EQ(linesOf("/var/log/velmora.log"), Texts());
  log("", "fourth");
  EXPECT_EQ(linesOf("/var/log/velmora.log"), Texts{"INFO  dest third"});
  EXPECT_EQ(syslogd.texts(), Texts{"INFO  dest fourth"});
}

// Unflushed lines go to syslog too, and a new directory gets a new file.
TEST_F(LogFileTest, AFileWhoseDirectoryIsGoneFallsBackToSyslog) {
  const auto logger = Logger::GetLogger("gone");
  for (const int frequency : {1, 3}) {
    SyslogSocket syslogd;
    fs::create_directory(in("sub"));
    logTo("sub/log", frequency);
    fs::remove_all(in("sub"));
    Texts expected;
    for (int i = 0; i < 7; ++i) {
      VESK_LOG(logger, Info, "%d", i);
      expected.push_back("INFO  gone " + std::to_string(i));
    }
    EXPECT_EQ(syslogd.texts(), expected) << frequency;
    fs::create_directory(in("sub"));
    for (int i = 0; i < 2 * frequency; ++i) VESK_LOG(logger, Info, "back");
    configure("");
    EXPECT_EQ(linesOf(in("sub/log")).size() + syslogd.texts().size(), 2u * frequency);
    EXPECT_EQ(linesOf(in("sub/log")).back(), "INFO  gone back");
    fs::remove_all(in("sub"));
  }
}

// Compressing a large file takes long; meanwhile others can use the log.
TEST_F(LogFileTest, CompressionDoesNotBlockLogging) {
  constexpr unsigned int kSize = 256 << 20;
  put(in("log"), "");
  fs::resize_file(in("log"), kSize);  // sparse
  FileLogging file;
  ASSERT_EQ(file.init(in("log").c_str(), {kSize, 2, true, 1, 0}), 0);
  const auto isCompressing = [&] {
    const std::string names = namesIn(m_dir);
    return names.find(".1.gz") != names.npos && names.find(".rotated.") != names.npos;
  };
  std::atomic<bool> over{false};
  std::thread writer([&] {
    write(file, "rotates");
    over = true;
  });
  while (!over && !isCompressing()) sched_yield();
  bool gotIt = false;
  while (!gotIt && isCompressing()) gotIt = file.mutex.tryLock();
  if (gotIt) file.mutex.unLock();
  EXPECT_TRUE(gotIt);
  writer.join();
}

// With compression, cached lines wait until a new file can be opened.
TEST_F(LogFileTest, ReopeningIsRetried) {
  FileLogging file, cached;
  ASSERT_EQ(file.init(in("log").c_str(), {4, 5, false, 1, 0}), 0);
  ASSERT_EQ(cached.init(in("cached").c_str(), {1 << 20, 5, true, 2, 2048}), 0);
  fs::remove_all(m_dir);
  for (const char* text : {"1", "2", "3"}) write(cached, "%s", text);
  write(file, "into nothing");
  fs::create_directory(m_dir);
  write(cached, "4");
  EXPECT_EQ(linesOf(in("cached")), (Texts{"1", "2", "3", "4"}));
  write(file, "moves to the first backup");
  EXPECT_EQ(linesOf(in("log.1")), Texts{"moves to the first backup"});
}

TEST_F(LogFileTest, AFullDiskDelaysABackup) {
  if (!testsupport::canMount()) GTEST_SKIP() << "mounts are needed";
  ASSERT_EQ(mount("tmpfs", m_dir.c_str(), "tmpfs", 0, "size=16k"), 0);
  FileLogging file;
  ASSERT_EQ(file.init(in("log").c_str(), {4, 2, true, 1, 0}), 0);
  put(in("ballast"), std::string(12288, 'x'));
  write(file, "cannot be compressed now");
  fs::remove(in("ballast"));
  write(file, "can");
  EXPECT_EQ(linesOf(plain(in("log.1.gz"))), Texts{"can"});
  EXPECT_EQ(linesOf(plain(in("log.2.gz"))), Texts{"cannot be compressed now"});
  EXPECT_EQ(paths().size(), 3u);
  file.destroy();
  ASSERT_EQ(umount(m_dir.c_str()), 0);
}

// With and without a cache. A limit of the file size stands in for a full disk.
TEST_F(LogFileTest, LostLinesAreReportedOnceAndSoIsRecovery) {
  const auto before = signal(SIGXFSZ, SIG_IGN);
  rlimit unlimited;
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &unlimited), 0);
  const rlimit none = {0, unlimited.rlim_max};
  for (const int frequency : {1, 3}) {
    SyslogSocket syslogd;
    const auto logger = Logger::GetLogger("full");
    const auto log = [&](const char* text) {
      for (int i = 0; i < 3 * frequency; ++i) VESK_LOG(logger, Info, "%s", text);
    };
    logTo("log", frequency);
    log("works");
    EXPECT_EQ(syslogd.texts(), Texts()) << frequency;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &none), 0);
    log("is lost");
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &unlimited), 0);
    log("works again");
    EXPECT_EQ(syslogd.texts(), (Texts{"Log messages are lost: cannot write " + in("log") + ": File too large",
                                      "Log messages are no longer lost: can write " + in("log")}))
        << frequency;
    EXPECT_EQ(linesOf(in("log")).back(), "INFO  full works again");
  }
  signal(SIGXFSZ, before);
}

// Both processes write and rotate: every line is complete in one of the files. A block that one process wrote
// while the other compressed the file may appear twice.
TEST_F(LogFileTest, TwoProcessesShareAFile) {
  constexpr int kLines = 1500;
  for (const bool zip : {false, true}) {
    const std::string path = in("log");
    const auto writeAll = [&](const char* who) {
      FileLogging file;
      file.init(path.c_str(), {60000, 900, zip, 2, 2048});
      for (int i = 0; i < kLines; ++i) write(file, "%s %d", who, i);
    };
    const pid_t child = fork();
    writeAll(child == 0 ? "child" : "parent");
    if (child == 0) _exit(0);
    waitpid(child, nullptr, 0);
    const std::map<std::string, int> seen = takeLines();
    EXPECT_EQ(seen.size(), 2u * kLines);
    for (const auto& line : seen) EXPECT_TRUE(line.second == 1 || (zip && line.second == 2)) << line.first;
  }
}

TEST_F(LogFileTest, LinesWrittenIntoACompressedFileAreWrittenAgain) {
  using Lines = std::map<std::string, int>;
  const std::string first(1000, '1'), second(1000, '2');  // too long for one cache
  for (const FileLogging::Settings& settings :
       {FileLogging::Settings{1 << 20, 9, true, 2, 2048}, FileLogging::Settings{1 << 20, 9, true, 1, 0}}) {
    FileLogging quiet, busy;
    quiet.init(in("log").c_str(), settings);
    busy.init(in("log").c_str(), {4, 9, true, 1, 0});
    write(quiet, "%s", first.c_str());
    write(busy, "rotates");
    write(quiet, "%s", second.c_str());
    write(busy, "rotates again");
    write(quiet, "third");
    quiet.init(in("other").c_str(), settings);
    EXPECT_EQ(linesOf(in("other")), Texts());
    EXPECT_EQ(takeLines(),
              (Lines{{first, 1}, {"rotates", 1}, {second, 1}, {"rotates again", 1}, {"third", 1}}));
  }
}

// Only the parent writes lines that are unflushed during a fork.
TEST_F(LogFileTest, AForkLeavesTheCacheToTheParentAndTheEndFlushesIt) {
  logTo("log", 100);
  const auto logger = Logger::GetLogger("fork");
  testsupport::checkInChild([&] {
    VESK_LOG(logger, Info, "before");
    const pid_t child = fork();
    VESK_LOG(logger, Info, child == 0 ? "child" : "parent");
    if (child != 0) waitpid(child, nullptr, 0);
    exit(0);
  });
  EXPECT_EQ(linesOf(in("log")), (Texts{"INFO  fork child", "INFO  fork before", "INFO  fork parent"}));
  configure("");
}

}  // namespace
