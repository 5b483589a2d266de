// What a message looks like and where it goes: levels, prefixes, cuts, names, the end of logging.

#include "util/include/log.h"

#include <gtest/gtest.h>
#include <syslog.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <future>

#include "tests/support/scratch_test.h"
#include "tests/support/syslog_socket.h"
#include "util/include/clock.h"
#include "util/include/error_util.h"
#include "util/include/mutex.h"
#include "util/include/thread.h"
#include "util/log_internal.h"

using namespace vesk;

namespace {

class LogTest : public ::testing::Test {
 protected:
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
  set("log: WARN\nlog.tree: DEBUG\nlog.tree.twig.leaf: DISABLED\nlogger.memory.log: DISABLED\n"
      "logger.facility.*: local2\n");
  const char* texts[] = {"TRACE ", "DEBUG ", "DIAG  ", "INFO  ", "WARN  ", "ERROR ", "FATAL ", "DISAB "};
  const int priorities[] = {7, 7, 7, 6, 4, 3, 0, 0};
  const struct {
    const char *name, *shown;
    Logger::LogLevel lowest;
  } rows[] = {
      {"other", "other ", Logger::Warn},
      {"tree", "tree ", Logger::Debug},
      {"tree.twig", "tree.twig ", Logger::Debug},
      {"tree.twig.leaf", "tree.twig.leaf ", Logger::Disabled},
      {"client", "", Logger::Trace},
      {"client.x", "", Logger::Trace},
      {"client2", "client2 ", Logger::Warn},
      {"diag.tree", "tree ", Logger::Warn},
      {"diag.client", "", Logger::Warn},
  };
  for (const auto& row : rows) {
    for (int level = Logger::Trace; level <= Logger::Disabled; ++level)
      Logger::GetLogger(row.name)->log(static_cast<Logger::LogLevel>(level), "", 0, "", "x");
    int level = row.lowest;
    for (const SyslogLine& line : syslogd.take()) {
      EXPECT_EQ(line.text, std::string(texts[level]) + row.shown + "x");
      EXPECT_EQ(line.priority, LOG_LOCAL2 | priorities[level]);
      EXPECT_EQ(line.sender, "log_test[" + std::to_string(getpid()) + "]");
      ++level;
    }
    EXPECT_EQ(level, Logger::Disabled + 1) << row.name;
  }
}

TEST_F(LogTest, ThePositionIsShownAsConfigured) {
  const char* positions[] = {"",
                             "\"file.cpp\" ",
                             "",
                             "\"file.cpp:12\" ",
                             "\"main()\" ",
                             "\"file.cpp:main()\" ",
                             "\"main()\" ",
                             "\"file.cpp:12:main()\" "};
  for (int bits = 0; bits < 8; ++bits) {
    set("logger.showmore.pos: " + std::to_string(bits) + "\n");
    EXPECT_EQ(shown("pos.below"), std::string("INFO  pos.below ") + positions[bits] + "7%") << bits;
  }
  EXPECT_EQ(shown("pos", 0), "INFO  pos \"file.cpp:main()\" 7%");
  EXPECT_EQ(shown("pos", 12, ""), "INFO  pos \"file.cpp:12:\" 7%");
  EXPECT_EQ(shown("pos", 12, nullptr), "INFO  pos \"file.cpp:12\" 7%");
}

TEST_F(LogTest, NamesAreShownAsTheyStand) {
  set("");
  EXPECT_EQ(shown("a%s%n"), "INFO  a%s%n 7%");
  EXPECT_EQ(Logger::SetThreadName("100%d"), "");
  EXPECT_EQ(shown("a"), "INFO  <100%d> a 7%");
  EXPECT_EQ(Logger::SetThreadName(nullptr), "100%d");
  EXPECT_EQ(shown("a"), "INFO  a 7%");
}

TEST_F(LogTest, ALongMessageIsCutAndNeverInAConversion) {
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

TEST_F(LogTest, SystemErrorsGoToTheDestinationWhicheverLevelLetThemPass) {
  set("log: ERROR\nlogger.memory.log: INFO\n");
  const auto logger = Logger::GetLogger("syserr");
  VESK_LOG_SYSERR(logger, Info, ENOENT, "no %s", "luck");
  VESK_LOG(logger, Info, "built and dropped");
  EXPECT_EQ(syslogd.texts(), Texts{"INFO  syserr no luck: No such file or directory"});
}

TEST_F(LogTest, BytesAreDumpedSixteenARow) {
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
  const auto expected = [] {
    const time_t now = dayclock::now();
    char time[64], host[64];
    strftime(time, sizeof time, "lead %F %T %z ", localtime(&now));
    gethostname(host, sizeof host);
    return time + std::string(host, strcspn(host, ".")) + " log_test[" + std::to_string(getpid()) + "]: ";
  };
  const std::string before = expected();
  char buffer[256];
  const int length = BuildMessagePrefix(buffer, sizeof buffer, "lead ");
  EXPECT_TRUE(buffer == before || buffer == expected()) << buffer;
  for (const int size : {0, 1, 5, 12, length, length + 1}) {
    std::vector<char> small(size + 1, '#');
    EXPECT_EQ(BuildMessagePrefix(small.data(), size, "lead "), std::min(size, length));
    EXPECT_EQ(small[size], '#');
    if (size > 0) {
      EXPECT_EQ(strlen(small.data()), static_cast<size_t>(size - 1));
    }
  }
}

TEST_F(LogTest, NamesOfLevelsAndFacilities) {
  EXPECT_EQ(TextToLevel(""), Logger::Info);
  EXPECT_EQ(TextToLevel("info"), -1);
  EXPECT_STREQ(LevelToText(static_cast<Logger::LogLevel>(8)), "");
  EXPECT_EQ(TextToFacility("LOCAL3"), LOG_LOCAL3);
  EXPECT_EQ(TextToFacility("local8"), -1);
}

TEST_F(LogTest, AThreadFindsTheLoggersItKnowsWithNobodysLock) {
  set("");
  const Thread counted;  // from here on the process counts as threaded
  const auto known = getLogger("known", false);
  std::promise<void> locked, found;
  std::thread holder([&] {
    Lock lock(gNamedLoggersProtect());
    locked.set_value();
    found.get_future().wait();
  });
  locked.get_future().wait();
  EXPECT_EQ(getLogger("known", false), known);
  found.set_value();
  holder.join();
  EXPECT_EQ(Logger::GetLogger("known"), known);
}

TEST_F(LogTest, AThrowUnderTheLoggersOwnLocksLeavesItsLine) {
  set("log.util.except: DEBUG\n");
  const Thread counted;
  Lock tree(gNamedLoggersProtect());
  Lock output(gLogMessageProtect());
  EXPECT_THROW(throw SystemException("a/b", 5, "text", "vesk::SystemException", 3), SystemException);
  EXPECT_EQ(syslogd.texts(), Texts{"DEBUG util.except (vesk::System) : text (reference a/b:5 rc: 3)"});
}

TEST_F(LogTest, AfterTheEndThereAreNoLoggersButThoseInHand) {
  set("");
  EXPECT_EQ(testsupport::inChild([] {
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
            }),
            0);
  EXPECT_EQ(syslogd.texts(), Texts{"WARN  kept.child still here"});
}

}  // namespace
