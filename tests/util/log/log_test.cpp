// Messages and the configuration: levels, names, positions, warnings, and changes while other threads log.

#include <syslog.h>

#include "tests/support/rows.h"
#include "tests/support/scratch_test.h"
#include "tests/support/syslog_socket.h"
#include "tests/support/workers.h"
#include "util/log/log_internal.h"
#include "util/thread/clock.h"

using namespace vesk;
using testsupport::checkInChild;

// By default the thread sanitizer does not allow threads in a forked child.
extern "C" const char* __tsan_default_options() {
  return "die_after_fork=0";
}

namespace {

class LogTest : public ::testing::Test {
 protected:
  // Configures, and discards what that logged.
  void set(const std::string& configuration) {
    configure(configuration);
    syslogd.take();
  }

  // An INFO message of a logger, as received at the log socket.
  std::string shown(const std::string& name, int line = 12, const char* function = "main") {
    Logger::GetLogger(name)->log(Logger::Info, "/src/dir/file.cpp", line, function, "%d%%", 7);
    const Texts texts = syslogd.texts();
    return texts.size() == 1 ? texts[0] : "lines: " + std::to_string(texts.size());
  }

  SyslogSocket syslogd;
};

TEST_F(LogTest, EachLoggerUsesTheNearestSetting) {
  set("log: WARN\nlog.tree: DEBUG\nlog.tree.twig.leaf: DISABLED\nlog.client: ERROR\n"
      "logger.memory.log: DISABLED\nlogger.facility.*: LOCAL1\nlogger.facility.log_test: local2\n"
      "logger.facility.tree: mail\nlogger.showmore: -1\nlogger.showmore.tree: 7\nlogger.showmore.tree.x: "
      "''\n");
  const char* texts[] = {"TRACE ", "DEBUG ", "DIAG  ", "INFO  ", "WARN  ", "ERROR ", "FATAL ", "DISAB "};
  const int priorities[] = {7, 7, 7, 6, 4, 3, 0, 0};
  for (const auto& [name, shown, lowest, facility] :
       testsupport::rowsOf<4>("util/log/settings.txt", "loggers: name, shown, lowest level, facility")) {
    for (int level = Logger::Trace; level <= Logger::Disabled; ++level)
      Logger::GetLogger(name)->log(static_cast<Logger::LogLevel>(level), "/a/file.cpp", 0, "main", "x");
    int level = std::stoi(lowest);
    for (const SyslogLine& line : syslogd.take()) {
      EXPECT_EQ(line.text, std::string(texts[level]) + shown + "x");
      EXPECT_EQ(line.priority, std::stoi(facility) | priorities[level]);
      EXPECT_EQ(line.sender, "log_test[" + std::to_string(getpid()) + "]");
      ++level;
    }
    EXPECT_EQ(level, Logger::Disabled + 1) << name;
  }
  configure("");  // the root keeps its facility unless another is set
  EXPECT_EQ(Logger::GetLogger("tree")->getEffectiveFacility(), LOG_LOCAL2);
}

TEST_F(LogTest, ThePositionIsShownAsConfigured) {
  const std::string positions[] = {"",       "file.cpp",        "",       "file.cpp:12",
                                   "main()", "file.cpp:main()", "main()", "file.cpp:12:main()"};
  for (int bits = 0; bits < 8; ++bits) {
    set("logger.showmore.pos: " + std::to_string(bits) + "\n");
    const std::string position = positions[bits].empty() ? "" : '"' + positions[bits] + "\" ";
    EXPECT_EQ(shown("pos.below"), "INFO  pos.below " + position + "7%") << bits;
  }
  EXPECT_EQ(shown("pos", 12, ""), "INFO  pos \"file.cpp:12:\" 7%");
  EXPECT_EQ(shown("pos", 12, nullptr), "INFO  pos \"file.cpp:12\" 7%");
}

TEST_F(LogTest, NamesAreNotTakenForFormats) {
  set("");
  EXPECT_EQ(shown("a%s%n"), "INFO  a%s%n 7%");
  EXPECT_EQ(Logger::SetThreadName("100%d"), "");
  EXPECT_EQ(shown("a"), "INFO  <100%d> a 7%");
  EXPECT_EQ(Logger::SetThreadName(nullptr), "100%d");
  EXPECT_EQ(shown("a"), "INFO  a 7%");
}

TEST_F(LogTest, ALongMessageIsCutButNotInsideAConversion) {
  set("");
  const std::string filling(500, 'x');
  errno = EINTR;
  Logger::GetLogger("a")->log(Logger::Info, "", 0, "", "%s", std::string(5000, 'y').c_str());
  Logger::GetLogger("a")->log(Logger::Info, "", 0, "", (filling + "12%08lx").c_str(), 1L);
  Logger::GetLogger("a")->log(Logger::Info, "", 0, "", (filling + "12%%%").c_str(), 0);
  EXPECT_EQ(errno, EINTR);
  EXPECT_EQ(syslogd.texts(), (Texts{"INFO  a " + std::string(503, 'y'), "INFO  a " + filling + "12",
                                    "INFO  a " + filling + "12"}));
}

TEST_F(LogTest, SystemErrorsReachTheDestinationThroughEitherLevel) {
  set("log: ERROR\nlogger.memory.log: INFO\n");
  const auto logger = Logger::GetLogger("syserr");
  VESK_LOG_SYSERR(logger, Info, ENOENT, "no %s", "luck");
  VESK_LOG(logger, Info, "built and dropped");
  EXPECT_EQ(syslogd.texts(), Texts{"INFO  syserr no luck: No such file or directory"});
}

TEST_F(LogTest, BytesAreDumpedInRowsOfSixteen) {
  set("");
  const unsigned char bytes[17] = {0,   0x1F, ' ', 'A', '~', 0x7F, 0x80, 0xFF, '%',
                                   's', 0,    0,   0,   0,   0,    'p',  'q'};
  Logger::GetLogger("hex")->hexData(Logger::Info, "caption", bytes, 17);
  Logger::GetLogger("hex")->hexData(Logger::Info, "nothing", nullptr, 0);
  EXPECT_EQ(syslogd.texts(),
            (Texts{"INFO  hex caption",
                   "INFO  hex 00 1f 20 41 7e 7f 80 ff 25 73 00 00 00 00 00 70   .. A~\x7f..%s.....p ",
                   "INFO  hex 71 " + std::string(47, ' ') + "q ", "INFO  hex nothing"}));
}

TEST_F(LogTest, LinesForFilesBeginWithTimeHostProgramAndProcess) {
  char buffer[256], time[64], host[64];
  gethostname(host, sizeof host);
  const std::string rest =
      std::string(host, strcspn(host, ".")) + " log_test[" + std::to_string(getpid()) + "]: ";
  int length = 0;
  for (const long moved : {0, 5000}) {
    const MovedDay day(moved);
    time_t then;
    do {
      then = dayclock::now();
      length = BuildMessagePrefix(buffer, sizeof buffer, "lead ");
    } while (dayclock::now() != then);
    strftime(time, sizeof time, "lead %F %T %z ", localtime(&then));
    EXPECT_EQ(buffer, time + rest);
  }
  for (const int size : {0, 1, 5, length, length + 1}) {
    std::vector<char> small(size + 1, '#');
    EXPECT_EQ(BuildMessagePrefix(small.data(), size, "lead "), std::min(size, length));
    EXPECT_EQ(small[size], '#');
    EXPECT_EQ(strnlen(small.data(), size), static_cast<size_t>(std::max(size - 1, 0)));
  }
}

TEST_F(LogTest, AThrowUnderTheLoggersOwnLocksIsLogged) {
  set("log.util.except: DEBUG\n");
  const Thread counted;
  Lock tree(gNamedLoggersProtect());
  Lock output(gLogMessageProtect());
  EXPECT_THROW(throw SystemException("a/b", 5, "text", "vesk::SystemException", 3), SystemException);
  EXPECT_EQ(syslogd.texts(), Texts{"DEBUG util.except (vesk::System) : text (reference a/b:5 rc: 3)"});
}

TEST_F(LogTest, AfterCloseOnlyLoggersThatWereKeptWork) {
  set("");
  checkInChild([] {
    const Thread counted;
    const auto kept = getLogger("kept.child", false);
    Logger::close();
    Logger::close();
    EXPECT_FALSE(Logger::GetLogger(""));
    EXPECT_FALSE(getLogger("kept.child", false));
    Logger::SetBufferActive(true);
    Logger::ReconfigureBuffer(true, "INFO");
    configure("log: TRACE\n");
    EXPECT_THROW(throw IOException("a", 1, "b", "IOException", 0), IOException);
    VESK_LOG(kept, Warn, "still here");
  });
  EXPECT_EQ(syslogd.texts(), Texts{"WARN  kept.child still here"});
}

TEST_F(LogTest, BadSettingsAreReported) {
  for (const auto& [configuration, complaints] :
       testsupport::rowsOf<2>("util/log/settings.txt", "bad settings")) {
    configure(configuration);
    std::string logged;
    for (const std::string& text : syslogd.texts()) {
      EXPECT_EQ(text.compare(0, 25, "WARN  com.zantrel.logger "), 0) << text;
      logged += text.substr(25) + "\n";
    }
    EXPECT_EQ(logged, complaints) << configuration;
  }
}

TEST_F(LogTest, ACallThatWasDisabledLogsOnceItsLevelIsLowered) {
  for (const auto& [configuration, name, expected] :
       testsupport::rowsOf<3>("util/log/settings.txt", "places: settings, second place, log")) {
    configure(configuration);
    VESK_LOG_TO("place.one", Debug, "here");
    VESK_LOG(Logger::GetLogger(name), Debug, "there");
    std::string log;
    for (const std::string& text : syslogd.texts()) log += text + "\n";
    EXPECT_EQ(log, expected) << configuration;
  }
}

TEST_F(LogTest, AChangeReachesLoggersThatCachedTheirLevel) {
  configure("log: ERROR\nlogger.memory.log: DISABLED\n");
  checkInChild([] {
    Logger::SetBufferActive(true);
    configure("log: ERROR\nlogger.memory.log: DISABLED\n");
    const auto logger = Logger::GetLogger("remembers.much");
    EXPECT_FALSE(logger->isEnabled(Logger::Info));
    configure("log: INFO\nlogger.memory.log: DEBUG\nlogger.memory.log.x: WARN\n");
    EXPECT_TRUE(logger->isEnabled(Logger::Info));
    EXPECT_FALSE(logger->isEnabled(Logger::Debug)) << "the memory level stays as remembered";
    EXPECT_TRUE(Logger::GetLogger("remembers.nothing")->isEnabled(Logger::Debug));
    EXPECT_EQ(Logger::GetLogger("x")->getEffectiveMemoryLevel(), Logger::Warn);
  });
}

// openlog is called once per process, so the test below starts a new process.
TEST(NewProcess, DISABLED_LogsOneLine) {
  Props(false, true);
  VESK_LOG_TO("a", Info, "line");
}

TEST_F(LogTest, AProgramMayHideItsProcessIdFromSyslog) {
  std::ofstream("/etc/velmora/velmora.conf") << "logger.openlog.log_test: false\n";
  const std::string self = std::filesystem::read_symlink("/proc/self/exe");
  EXPECT_EQ(
      system(("'" + self + "' --gtest_also_run_disabled_tests --gtest_filter=NewProcess.* >&2").c_str()), 0);
  const auto lines = syslogd.take();
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].sender, "log_test");
}

TEST_F(LogTest, ProgramsAreIgnoredByTheirExactNames) {
  configure("logger.program.ignore: sshd, \"a b\"\n");
  EXPECT_TRUE(Logger::GetLogger("")->ignoreProgram("a b") && !Logger::GetLogger("")->ignoreProgram("SSHD"));
}

TEST_F(LogTest, AProgramRunsWithoutConfigurationSyslogOrDirectories) {
  checkInChild([] {
    rename("/dev/log", "/dev/log.away");
    unlink("/etc/velmora/velmora.conf");
    Props(false, true);
    VESK_LOG_TO("a", Error, "nobody hears");
    Logger::startThread(Logger::GetLogger("a"));
    VESK_LOG_TO("a", Error, "nobody hears");
    Logger::stopThread({});
    configure("logger.destination: /var/log/gone/velmora.log\n");
    VESK_LOG_TO("a", Error, "nobody hears");
    rename("/dev/log.away", "/dev/log");
  });
  EXPECT_EQ(syslogd.texts(), Texts());
}

TEST_F(LogTest, ThreadsLogAcrossChangesAndNoOldLevelStays) {
  const std::string file = "logger.destination: /var/log/change.log\nlogger.memory.log: DISABLED\n";
  configure(file);
  std::atomic<bool> stop{false};
  {
    std::list<Worker> threads;
    for (int thread = 0; thread < 3; ++thread)
      threads.emplace_back([&] {
        for (int i = 0; !stop; ++i)
          VESK_LOG(Logger::GetThreadPrivateLogger("t." + std::to_string(i % 50)), Debug, "line %d", i);
      });
    for (int i = 0; i < 40; ++i)
      configure(file + (i % 2 == 0 ? "log: DISABLED\n" : "log: DEBUG\nlog.x: y\n"));
    configure(file);
    stop = true;
  }
  for (int i = 0; i < 50; ++i) {
    const auto logger = Logger::GetLogger("t." + std::to_string(i));
    EXPECT_TRUE(logger->isEnabled(Logger::Info) && !logger->isEnabled(Logger::Debug)) << i;
  }
}

}  // namespace
