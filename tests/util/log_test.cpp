// What a message looks like and where it goes: levels, prefixes, cuts, names, the end of logging.

#include "util/include/log.h"

#include <gtest/gtest.h>
#include <syslog.h>

#include <cerrno>
#include <cstdlib>
#include <future>
#include <new>

#include "tests/support/scratch_test.h"
#include "tests/util/syslog_socket.h"
#include "util/include/char_accumulator.h"
#include "util/include/error_util.h"
#include "util/include/mutex.h"
#include "util/include/thread.h"
#include "util/log_internal.h"

using namespace vesk;
using testsupport::inChild;

namespace {

thread_local long gAllocations = 0;

}  // namespace

void* operator new(size_t size) {
  ++gAllocations;
  if (void* memory = malloc(size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
  free(memory);
}
void operator delete(void* memory, size_t) noexcept {
  free(memory);
}

namespace {

using Texts = std::vector<std::string>;

class LogTest : public ::testing::Test {
 protected:
  void TearDown() override { Logger::SetThreadName(nullptr); }

  // Configures, and forgets what was logged on the way.
  void set(const std::string& configuration) {
    configure(configuration);
    syslogd.take();
  }

  // What one INFO message of a logger becomes at the log socket.
  std::string shown(const std::string& name, int line = 12, const char* function = "main") {
    Logger::GetLogger(name)->log(Logger::Info, "/src/dir/file.cpp", line, function, "%d%%", 7);
    const Texts texts = syslogd.texts();
    return texts.size() == 1 ? texts[0] : "lines: " + std::to_string(texts.size());
  }

  SyslogSocket syslogd;
};

TEST_F(LogTest, LevelsOfTheNearestAncestorDecide) {
  set("log: WARN\nlog.tree: DEBUG\nlog.tree.twig.leaf: DISABLED\nlogger.memory.log: DISABLED\n");
  const struct {
    const char* name;
    Logger::LogLevel lowest;
  } rows[] = {
      {"other", Logger::Warn},      {"tree", Logger::Debug},
      {"tree.twig", Logger::Debug}, {"tree.twig.leaf", Logger::Disabled},
      {"client", Logger::Trace},    {"client.x", Logger::Trace},
      {"clients", Logger::Warn},    {"diag.tree", Logger::Warn},
  };
  for (const auto& row : rows)
    for (int level = Logger::Trace; level <= Logger::Disabled; ++level) {
      const auto logger = Logger::GetLogger(row.name);
      logger->log(static_cast<Logger::LogLevel>(level), "", 0, "", "x");
      EXPECT_EQ(syslogd.take().size(), level >= row.lowest ? 1u : 0u) << row.name << " " << level;
    }
}

TEST_F(LogTest, PrioritiesFollowTheLevels) {
  set("log: TRACE\nlogger.facility.*: local2\n");
  const int priorities[] = {LOG_DEBUG,   LOG_DEBUG, LOG_DEBUG, LOG_INFO,
                            LOG_WARNING, LOG_ERR,   LOG_EMERG, LOG_EMERG};
  const char* texts[] = {"TRACE", "DEBUG", "DIAG ", "INFO ", "WARN ", "ERROR", "FATAL", "DISAB"};
  for (int level = Logger::Trace; level <= Logger::Disabled; ++level) {
    Logger::GetLogger("a")->log(static_cast<Logger::LogLevel>(level), "", 0, "", "x");
    const auto lines = syslogd.take();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].priority, LOG_LOCAL2 | priorities[level]);
    EXPECT_EQ(lines[0].text, std::string(texts[level]) + " a x");
    EXPECT_EQ(lines[0].sender, "log_test[" + std::to_string(getpid()) + "]");
  }
}

TEST_F(LogTest, ThePositionIsShownAsConfigured) {
  const char* positions[] = {
      "",
      "\"file.cpp\" ",
      "",
      "\"file.cpp:12\" ",
      "\"main()\" ",
      "\"file.cpp:main()\" ",
      "\"main()\" ",
      "\"file.cpp:12:main()\" ",
  };
  for (int bits = 0; bits < 8; ++bits) {
    set("logger.showmore: 0\nlogger.showmore.pos: " + std::to_string(bits) + "\n");
    EXPECT_EQ(shown("pos.below"), std::string("INFO  pos.below ") + positions[bits] + "7%") << bits;
  }
  EXPECT_EQ(shown("pos", 0), "INFO  pos \"file.cpp:main()\" 7%");
  EXPECT_EQ(shown("pos", 12, ""), "INFO  pos \"file.cpp:12:\" 7%");
  EXPECT_EQ(shown("pos", 12, nullptr), "INFO  pos \"file.cpp:12\" 7%");
}

TEST_F(LogTest, NamesAreShownAsTheyStand) {
  set("");
  EXPECT_EQ(shown("diag.lrpc.session"), "INFO  lrpc.session 7%");
  EXPECT_EQ(shown("client"), "INFO  7%");
  EXPECT_EQ(shown("client.x"), "INFO  7%");
  EXPECT_EQ(shown("diag.client"), "INFO  7%");
  EXPECT_EQ(shown("client2"), "INFO  client2 7%");
  EXPECT_EQ(shown("a%s%n"), "INFO  a%s%n 7%");
  EXPECT_EQ(Logger::SetThreadName("100%d"), "");
  EXPECT_EQ(shown("a"), "INFO  <100%d> a 7%");
  EXPECT_EQ(Logger::SetThreadName(nullptr), "100%d");
  EXPECT_EQ(shown("a"), "INFO  a 7%");
}

TEST_F(LogTest, ALongMessageIsCutAndNeverInAConversion) {
  set("");
  const std::string prefix = "INFO  a ";
  const std::string filling(500, 'x');
  errno = EINTR;
  Logger::GetLogger("a")->log(Logger::Info, "", 0, "", "%s", std::string(5000, 'y').c_str());
  Logger::GetLogger("a")->log(Logger::Info, "", 0, "", (filling + "12%08lx").c_str(), 1L);
  Logger::GetLogger("a")->log(Logger::Info, "", 0, "", (filling + "12%%%").c_str());
  EXPECT_EQ(errno, EINTR);
  const Texts texts = syslogd.texts();
  ASSERT_EQ(texts.size(), 3u);
  EXPECT_EQ(texts[0], prefix + std::string(511 - prefix.size(), 'y'));
  EXPECT_EQ(texts[1], prefix + filling + "12");
  EXPECT_EQ(texts[2], prefix + filling + "12");
}

TEST_F(LogTest, SystemErrorsGoToTheDestinationWhicheverLevelLetThemPass) {
  set("log: ERROR\nlogger.memory.log: INFO\n");
  const auto logger = Logger::GetLogger("syserr");
  VESK_LOG_SYSERR(logger, Info, ENOENT, "no %s", "luck");
  VESK_LOG(logger, Info, "built and dropped");
  EXPECT_EQ(syslogd.texts(), Texts{"INFO  syserr no luck: No such file or directory"});
}

TEST_F(LogTest, BytesAreDumpedSixteenARow) {
  set("logger.showmore: 0\n");
  const unsigned char bytes[17] = {0,   0x1F, ' ', 'A', '~', 0x7F, 0x80, 0xFF, '%',
                                   's', 0,    0,   0,   0,   0,    'p',  'q'};
  Logger::GetLogger("hex")->hexData(Logger::Info, "caption", bytes, 17);
  EXPECT_EQ(syslogd.texts(),
            (Texts{"INFO  hex caption",
                   "INFO  hex 00 1f 20 41 7e 7f 80 ff 25 73 00 00 00 00 00 70   .. A~\x7f..%s.....p ",
                   "INFO  hex 71 " + std::string(47, ' ') + "q "}));
  Logger::GetLogger("hex")->hexData(Logger::Info, "nothing", nullptr, 0);
  EXPECT_EQ(syslogd.texts(), Texts{"INFO  hex nothing"});
}

TEST_F(LogTest, NamesOfLevelsAndFacilities) {
  EXPECT_EQ(TextToLevel(""), Logger::Info);
  EXPECT_EQ(TextToLevel("info"), -1);
  EXPECT_EQ(TextToLevel("DISABLED"), 7);
  EXPECT_STREQ(LevelToText(static_cast<Logger::LogLevel>(8)), "");
  EXPECT_STREQ(LevelToText(static_cast<Logger::LogLevel>(-1)), "");
  EXPECT_EQ(TextToFacility("LOCAL3"), LOG_LOCAL3);
  EXPECT_EQ(TextToFacility("Kern"), LOG_KERN);
  EXPECT_EQ(TextToFacility("local8"), -1);
  EXPECT_EQ(TextToFacility(""), -1);
}

// Lines without a daemon: lead, time with offset, host, program, process.
TEST_F(LogTest, ThePrefixStaysInItsBuffer) {
  char buffer[256];
  const int length = BuildMessagePrefix(buffer, sizeof buffer, "lead ");
  EXPECT_EQ(length, static_cast<int>(strlen(buffer)));
  EXPECT_TRUE(std::string(buffer).rfind("lead 2", 0) == 0);
  const std::string end = " log_test[" + std::to_string(getpid()) + "]: ";
  EXPECT_EQ(std::string(buffer).substr(length - end.size()), end);
  EXPECT_EQ(BuildMessagePrefix(buffer, 4, "lead "), 4);
  EXPECT_STREQ(buffer, "lea");
  EXPECT_EQ(BuildMessagePrefix(buffer, 0, "lead "), 0);
}

TEST_F(LogTest, MessagesAllocateNothing) {
  set("log: WARN\nlogger.memory.log: WARN\n");
  const auto logger = getLogger("alloc", false);
  VESK_LOG(logger, Warn, "warm %d", 0);
  const long before = gAllocations;
  for (int i = 0; i < 100; ++i) VESK_LOG(logger, Info, "disabled %d", i);
  VESK_LOG(logger, Warn, "enabled %d", 1);
  EXPECT_EQ(gAllocations, before);
}

TEST_F(LogTest, AThreadFindsLoggersWithNobodysLock) {
  set("");
  Thread counted;  // from here on the process counts as threaded
  boost::shared_ptr<Logger> first, second;
  std::promise<void> known, locked;
  std::thread other([&] {
    first = getLogger("known", false);
    known.set_value();
    locked.get_future().wait();
    second = getLogger("known", false);
  });
  known.get_future().wait();
  {
    Lock lock(gNamedLoggersProtect());
    locked.set_value();
    other.join();
  }
  EXPECT_EQ(first, Logger::GetLogger("known"));
  EXPECT_EQ(second, first);
}

TEST_F(LogTest, AThrowUnderTheLoggersOwnLocksLeavesItsLine) {
  set("log.util.except: DEBUG\n");
  Thread counted;
  Lock tree(gNamedLoggersProtect());
  Lock output(gLogMessageProtect());
  EXPECT_THROW(throw SystemException("a/b", 5, "text", "vesk::SystemException", 3), SystemException);
  EXPECT_EQ(syslogd.texts(), Texts{"DEBUG util.except (vesk::System) : text (reference a/b:5 rc: 3)"});
}

TEST_F(LogTest, AfterTheEndThereAreNoLoggersButThoseInHand) {
  set("");
  EXPECT_EQ(inChild([this] {
              Thread counted;
              const auto kept = getLogger("kept.child", false);
              Logger::close();
              Logger::close();
              EXPECT_FALSE(Logger::GetLogger(""));
              EXPECT_FALSE(Logger::GetLogger("kept.child"));
              EXPECT_FALSE(getLogger("kept.child", false));
              Logger::SetBufferActive(true);
              Logger::ReconfigureBuffer(true, "INFO");
              configure("log: TRACE\n");
              EXPECT_THROW(throw IOException("a", 1, "b", "IOException", 0), IOException);
              VESK_LOG(kept, Warn, "still here");
            }),
            0);
  EXPECT_EQ(syslogd.texts(), Texts{"WARN  kept.child still here"});
}

}  // namespace
