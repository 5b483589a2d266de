// The log file: settings, cache, rotation, traps in its place, full disks, several processes.

#include <fokrazo/file_logging.h>

#include <fcntl.h>
#include <sys/mount.h>
#include <syslog.h>

#include <atomic>
#include <cstdarg>
#include <map>
#include <thread>
#include <tuple>

#include <fokrazo/log.h>
#include <fokrazo/log_gzip.h>
#include "tests/support/scratch_test.h"
#include "tests/support/syslog_socket.h"
#include "util/file/unique_fd.h"

using namespace vesk;
namespace fs = std::filesystem;

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

  // A file with the plain text: a compressed one is expanded.
  std::string plain(const fs::path& path) {
    if (path.extension() != ".gz") return path;
    EXPECT_EQ(system(("gzip -t " + path.string()).c_str()), 0);
    constexpr char kExpanded[] = "/var/velmora/expanded";
    gunzip(path.c_str(), kExpanded);
    return kExpanded;
  }

  // Names in the directory with the text of the files.
  std::map<std::string, std::string> files() {
    std::map<std::string, std::string> all;
    for (const fs::directory_entry& entry : fs::directory_iterator(m_dir))
      all[entry.path().filename()] = get(plain(entry.path()));
    return all;
  }

  // Whether a file's name contains that part.
  bool files(const std::string& part) {
    for (const fs::directory_entry& entry : fs::directory_iterator(m_dir))
      if (entry.path().filename().string().find(part) != std::string::npos) return true;
    return false;
  }

  // How often each line is in the files.
  std::map<std::string, int> lines() {
    std::map<std::string, int> all;
    for (const fs::directory_entry& entry : fs::directory_iterator(m_dir))
      for (const std::string& line : linesOf(plain(entry.path()))) ++all[line];
    return all;
  }
};

TEST_F(LogFileTest, SettingsHaveTheirLimits) {
  const std::tuple<const char*, const char*, const char*, FileLogging::Settings> rows[] = {
      {"", "", "", {0x20000000, 5, false, 10, 10240}},
      {"0", "0", "1", {1 << 20, 0, false, 0, 0}},
      {"1", "-3", "0", {0, 5, false, 1, 0}},
      {"2", "7", "4095", {4095u << 20, 7, false, 2, 2048}},
      {"513", "2147483647", "4096", {0xFFFFFFFF, 9999, false, 512, 524288}},
      {"-1", "x", "-1", {0xFFF00000, 0, false, 10, 10240}},
  };
  const auto tied = [](const FileLogging::Settings& settings) {
    return std::make_tuple(settings.maxSize, settings.maxCount, settings.zipBackup, settings.flushFrequency,
                           settings.cacheSize);
  };
  for (const auto& [frequency, count, size, wanted] : rows) {
    const std::string stem = "\nlogger.file.";
    configure(stem + "flush.frequency: " + frequency + stem + "maxcount: " + count + stem +
              "maxsize: " + size);
    EXPECT_EQ(tied(FileLogging::Settings::read()), tied(wanted));
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
  using Files = std::map<std::string, std::string>;
  const std::tuple<FileLogging::Settings, Files, Files> rows[] = {
      {{4, 2, false, 1, 0},
       {{"log", "new"}, {"log.1", "1"}, {"log.2", "2"}},
       {{"log", ""}, {"log.1", "new"}, {"log.2", "1"}}},
      {{4, 4, false, 1, 0},
       {{"log", "new"}, {"log.2", "2"}},
       {{"log", ""}, {"log.1", "new"}, {"log.3", "2"}}},
      {{4, 2, true, 1, 0},
       {{"log", "new"}, {"log.1", "1"}},
       {{"log", ""}, {"log.1.gz", "new"}, {"log.1", "1"}}},
      {{4, 0, false, 1, 0}, {{"log", "new"}}, {{"log", "new"}}},
      {{1 << 20, 2, false, 1, 0}, {{"log", "new"}}, {{"log", "new"}}},
  };
  const std::string line(40000, 'x');
  for (const auto& [settings, before, after] : rows) {
    for (const auto& [name, text] : before) put(in(name), text);
    FileLogging file;
    file.init(in("log").c_str(), settings);
    write(file, "%s", line.c_str());
    Files left = files();
    for (auto& [name, text] : left) {
      if (text.find("]: " + line + "\n") != std::string::npos) text.erase(strlen("new"));
      fs::remove(in(name));
    }
    EXPECT_EQ(left, after);
  }
}

// None of these may block, be written through, or change another file's mode. What is open is close-on-exec.
TEST_F(LogFileTest, TrapsInPlaceOfTheFileAreRefused) {
  ASSERT_EQ(mkfifo(in("fifo").c_str(), 0666) + mkdir(in("directory").c_str(), 0755), 0);
  put(in("target"), "");
  fs::permissions(in("target"), fs::perms::owner_read);
  fs::create_symlink(in("fifo"), in("link to fifo"));
  fs::create_symlink(in("target"), in("link"));
  fs::create_hard_link(in("target"), in("hard link"));
  FileLogging file;
  const std::pair<const char*, int> rows[] = {{"fifo", ENXIO},
                                              {"link to fifo", ENXIO},
                                              {"directory", EISDIR},
                                              {"missing/log", ENOENT},
                                              {"hard link", EMLINK}};
  for (const auto& [name, error] : rows) EXPECT_EQ(file.init(in(name).c_str()), error) << name;
  const UniqueFd reader(open(in("fifo").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  EXPECT_EQ(file.init(in("fifo").c_str()), ENXIO) << "with a reader";
  fs::remove(in("hard link"));
  if (lchown(in("link").c_str(), testsupport::kOrdinaryUser, 0) == 0) {
    EXPECT_EQ(file.init(in("link").c_str()), ELOOP);
    ASSERT_EQ(lchown(in("link").c_str(), 0, 0), 0);
  }
  EXPECT_EQ(modeOf(in("target")) & 07777, 0400u);
  EXPECT_FALSE(file.isOpened());
  const int next = dup(0);
  close(next);
  EXPECT_EQ(file.init(in("link").c_str()), 0);
  EXPECT_EQ(fcntl(next, F_GETFD), FD_CLOEXEC);
}

TEST_F(LogFileTest, TheLogTakesNoStandardStream) {
  const auto logsWithoutStreams = [this] {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) ::close(stream);
    FileLogging file(in("log").c_str());
    const int written = static_cast<int>(::write(STDOUT_FILENO, "output", 6));
    _exit(file.isOpened() && written < 0 ? 0 : 1);
  };
  const pid_t child = fork();
  if (child == 0) logsWithoutStreams();
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

// As with a container's /dev/stdout. If the reader is gone or does not read, the lines go to syslog.
TEST_F(LogFileTest, APipeThatALinkOfRootsLeadsToGetsEachLineAtOnce) {
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
  const std::string filling(100'000, 'x');
  EXPECT_GT(::write(ends[1], filling.data(), filling.size()), 0);
  VESK_LOG(logger, Info, "full");
  close(ends[0]);
  VESK_LOG(logger, Info, "gone");
  EXPECT_EQ(syslogd.texts(), (Texts{"INFO  pipe full", "INFO  pipe gone"}));
  close(ends[1]);
}

// Whatever a message quotes, it stays one line and cannot control a terminal; the format's own newline stays.
// All destinations and the memory log write the same.
TEST_F(LogFileTest, OutsideTextIsEscapedInEverySink) {
  const std::pair<std::string, std::string> rows[] = {
      {"plain \t\x7f D\xc3\xa9j\xc3\xa0 \xe2\x82\xac \xf0\x9f\x94\x91 \\x1b", ""},
      {"a\nroot: fine\r\b\x1b[2J", "a\\x0aroot: fine\\x0d\\x08\\x1b[2J"},
      {"\xc2\x9b 31m \xe2\x80\xae \xe2\x81\xa6", "\\xc2\\x9b 31m \\xe2\\x80\\xae \\xe2\\x81\\xa6"},
      {"\x9b \xff \xc0\x8a \xed\xa0\x80 \xe2\x82", "\\x9b \\xff \\xc0\\x8a \\xed\\xa0\\x80 \\xe2\\x82"},
      {"line\n", "line\\x0a"},
  };
  const auto logger = Logger::GetLogger("client.x");
  const std::string destination = "logger.destination: " + in("log") + "\nlogger.file.flush.frequency: ";
  for (const std::string& configuration :
       {destination + "1\n", destination + "2\n", std::string(), std::string("logger.queue.size: 1000\n")}) {
    SyslogSocket syslogd;
    configure(configuration);
    if (configuration[0] == 'l' && configuration[7] == 'q') Logger::startThread({});
    Texts expected;
    for (const auto& [text, escaped] : rows) {
      VESK_LOG(logger, Info, "%s.", text.c_str());
      expected.push_back("INFO  " + (escaped.empty() ? text : escaped) + ".");
    }
    VESK_LOG(logger, Info, "%s\n", std::string(600, '\1').c_str());
    VESK_LOG(logger, Info, "%s", "end\n");
    Logger::stopThread({});
    const bool toFile = configuration.find(in("log")) != std::string::npos;
    if (toFile) configure("");
    Texts written = toFile ? linesOf(in("log")) : syslogd.texts();
    ASSERT_GE(written.size(), 7u) << configuration;
    EXPECT_EQ(Texts(written.begin(), written.begin() + 5), expected) << configuration;
    EXPECT_EQ(written[5].compare(0, 14, "INFO  \\x01\\x01"), 0) << written[5];
    EXPECT_LE(written[5].size(), configuration == destination + "1\n" ? 3000u : 1023u);
    EXPECT_EQ(written.back(), "INFO  end\\x0a") << configuration;
    fs::remove(in("log"));
  }
}

TEST_F(LogFileTest, ADestinationThatFailsFallsBackOnSyslogAndCanChange) {
  SyslogSocket syslogd;
  const auto logger = Logger::GetLogger("dest");
  configure("logger.destination: " + in("none/log") + "\n");
  VESK_LOG(logger, Info, "first");
  EXPECT_EQ(syslogd.texts(),
            (Texts{"Could not open " + in("none/log") + ": No such file or directory", "INFO  dest first"}));
  configure("logger.destination: " + in("log") + "\nlogger.file.flush.frequency: 1\n");
  VESK_LOG(logger, Info, "second");
  EXPECT_EQ(linesOf(in("log")), Texts{"INFO  dest second"});
  configure("logger.destination: file\nlogger.file.flush.frequency: 5\n");
  VESK_LOG(logger, Info, "third");
  EXPECT_EQ(linesOf("/var/log/velmora.log"), Texts());
  configure("");
  EXPECT_EQ(linesOf("/var/log/velmora.log"), Texts{"INFO  dest third"});
  VESK_LOG(logger, Info, "fourth");
  EXPECT_EQ(syslogd.texts(), Texts{"INFO  dest fourth"});
}

// The lines that wait for a flush go to syslog too, and a new directory gets a new file.
TEST_F(LogFileTest, AFileWhoseDirectoryIsGoneFallsBackOnSyslog) {
  const auto logger = Logger::GetLogger("gone");
  for (const int frequency : {1, 3}) {
    SyslogSocket syslogd;
    fs::create_directory(in("sub"));
    configure("logger.destination: " + in("sub/log") +
              "\nlogger.file.flush.frequency: " + std::to_string(frequency) + "\n");
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
TEST_F(LogFileTest, NobodyWaitsForACompression) {
  constexpr unsigned int kSize = 256 << 20;
  put(in("log"), "");
  fs::resize_file(in("log"), kSize);  // takes no room
  FileLogging file;
  ASSERT_EQ(file.init(in("log").c_str(), {kSize, 2, true, 1, 0}), 0);
  const auto isCompressing = [&] { return files(".rotated.") && files(".1.gz"); };
  std::atomic<bool> over{false};
  std::thread writer([&] {
    write(file, "rotates");
    over = true;
  });
  while (!over && !isCompressing()) sched_yield();
  bool gotIt = false;
  while (!gotIt && isCompressing())
    if (file.mutex.tryLock()) {
      gotIt = true;
      file.mutex.unLock();
    }
  EXPECT_TRUE(gotIt);
  writer.join();
}

// With compression, cached lines wait until a new file can be opened.
TEST_F(LogFileTest, AFileThatCannotBeOpenedAgainIsTriedAgain) {
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

TEST_F(LogFileTest, AFullDiskCostsOnlyTheLinesAndDelaysABackup) {
  if (!testsupport::canMount()) GTEST_SKIP() << "mounts are needed";
  ASSERT_EQ(mount("tmpfs", m_dir.c_str(), "tmpfs", 0, "size=16k"), 0);
  for (const unsigned int cache : {0u, 4096u}) {
    FileLogging file;
    ASSERT_EQ(file.init(in("log").c_str(), {1 << 20, 2, false, 2, cache}), 0);
    for (int i = 0; i < 400; ++i) write(file, "a line of many %d", i);
    ASSERT_EQ(truncate(in("log").c_str(), 0), 0);
    for (int i = 0; i < 20; ++i) write(file, "there is room again");
    EXPECT_EQ(linesOf(in("log")).back(), "there is room again") << cache;
    file.destroy();
    fs::remove(in("log"));
  }
  FileLogging file;
  ASSERT_EQ(file.init(in("log").c_str(), {4, 2, true, 1, 0}), 0);
  put(in("ballast"), std::string(12288, 'x'));
  write(file, "cannot be compressed now");
  fs::remove(in("ballast"));
  write(file, "can");
  EXPECT_EQ(linesOf(plain(in("log.1.gz"))), Texts{"can"});
  EXPECT_EQ(linesOf(plain(in("log.2.gz"))), Texts{"cannot be compressed now"});
  EXPECT_EQ(files().size(), 3u);
  file.destroy();
  ASSERT_EQ(umount(m_dir.c_str()), 0);
}

// Both processes write and rotate: every line is in one of the files, whole. A block that one process wrote
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
    const std::map<std::string, int> seen = lines();
    EXPECT_EQ(seen.size(), 2u * kLines);
    for (const auto& line : seen) EXPECT_TRUE(line.second == 1 || (zip && line.second == 2)) << line.first;
    for (const auto& file : files()) fs::remove(in(file.first));
  }
}

TEST_F(LogFileTest, WhatIsWrittenIntoACompressedFileIsWrittenAgain) {
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
    EXPECT_EQ(lines(), (Lines{{first, 1}, {"rotates", 1}, {second, 1}, {"rotates again", 1}, {"third", 1}}));
    for (const auto& file : files()) fs::remove(in(file.first));
  }
}

// What a process has not flushed before a fork is written by that process alone.
TEST_F(LogFileTest, AForkLeavesTheCacheToTheParentAndTheEndFlushesIt) {
  configure("logger.destination: " + in("log") + "\nlogger.file.flush.frequency: 100\n");
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
