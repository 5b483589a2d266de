// The configuration: complaints, facilities, memory levels, and changes while other threads log.

#include <gtest/gtest.h>
#include <syslog.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <list>
#include <map>
#include <regex>

#include "tests/support/scratch_test.h"
#include "tests/support/syslog_socket.h"
#include "util/include/circular_buffer.h"
#include "util/include/log.h"
#include "util/include/properties.h"
#include "util/include/thread.h"

using namespace vesk;
using testsupport::inChild;

// The thread sanitizer allows a forked child no thread of its own otherwise.
extern "C" const char* __tsan_default_options() {
  return "die_after_fork=0";
}

namespace {

Texts complaints(Texts texts) {
  for (std::string& text : texts) text.insert(0, "WARN  com.zantrel.logger ");
  return texts;
}

class LogConfigTest : public ::testing::Test {
 protected:
  SyslogSocket syslogd;
};

TEST_F(LogConfigTest, BadSettingsGetTheirWords) {
  const struct {
    const char* configuration;
    Texts complaints;
  } rows[] = {
      {"log: info\n", {"Illegal value for property 'log': 'info'. Using 'INFO'."}},
      {"log.foo: NONE\n", {"Illegal log level. Property: 'log.foo', value: 'NONE'"}},
      {"Log.: INFO\n", {"Illegal log name: 'Log.'"}},
      {"logger.facility.*: local8\n",
       {"Illegal value facility name: 'local8' for 'logger.facility.*'. Using 'auth'.",
        "Illegal log facility. Property: 'logger.facility.*', value: 'local8'",
        "Illegal log facility. Property: 'logger.facility.*', value: 'local8'"}},
      {"logger.facility.: mail\n",
       {"Illegal facility name: 'logger.facility.'", "Illegal facility name: 'logger.facility.'"}},
      {"logger.showmore.: 7\n", {"Illegal log name: 'logger.showmore.'"}},
      // What follows is read only where a program has allowed the memory log.
      {"logger.memory.log: NONE\nlogger.memory.log.: x\nlogger.memory.enabled: true\n", {}},
      {"log.a%s%n: %s%n\n", {"Illegal log level. Property: 'log.a%s%n', value: '%s%n'"}},
  };
  for (const auto& row : rows) {
    configure(row.configuration);
    EXPECT_EQ(syslogd.texts(), complaints(row.complaints)) << row.configuration;
  }
  EXPECT_EQ(Logger::GetLogger("foo")->getEffectiveLevel(), Logger::Info);
}

TEST_F(LogConfigTest, APlaceThatWasSilentSpeaksWhenItsLevelFalls) {
  const auto speak = [this](const std::string& name) {
    VESK_LOG_TO("place.one", Debug, "here");
    VESK_LOG_TO(name, Debug, "there");
    return syslogd.texts();
  };
  configure("log: INFO\n");
  EXPECT_EQ(speak("place.two"), Texts());
  configure("log.place: DEBUG\n");
  EXPECT_EQ(speak("place.two"), Texts({"DEBUG place.one here", "DEBUG place.two there"}));
  configure("log.place.three: DEBUG\n");
  EXPECT_EQ(speak("place.two"), Texts());
  EXPECT_EQ(speak("place.three"), Texts({"DEBUG place.three there"}));
}

TEST_F(LogConfigTest, EachLoggerHasWhatTheNearestSettingSays) {
  configure(
      "log: ERROR\nlog.a.b: debug\nlog.a: DEBUG\nlog.client: ERROR\n"
      "logger.facility.*: LOCAL1\nlogger.facility.log_config_test: local2\nlogger.facility.a: mail\n"
      "logger.showmore: -1\nlogger.showmore.a: 5\nlogger.showmore.a.b: ''\n");
  const struct {
    const char* name;
    int level, facility, showMore;
  } rows[] = {
      {"", Logger::Error, LOG_LOCAL2, 0},
      {"a", Logger::Debug, LOG_MAIL, 5},
      {"a.b.c", Logger::Debug, LOG_MAIL, 5},
      {"client.x", Logger::Trace, LOG_LOCAL2, 0},
      {"com.zantrel.logger", Logger::Warn, LOG_AUTH, 0},
      {"*", Logger::Error, LOG_LOCAL1, 0},
  };
  for (const auto& row : rows) {
    const auto logger = Logger::GetLogger(row.name);
    EXPECT_EQ(logger->getEffectiveLevel(), row.level) << row.name;
    EXPECT_EQ(logger->getEffectiveFacility(), row.facility) << row.name;
    EXPECT_EQ(logger->getShowMore(), row.showMore) << row.name;
  }
  configure("");  // the root keeps its facility where nothing names one
  EXPECT_EQ(Logger::GetLogger("a")->getEffectiveFacility(), LOG_LOCAL2);
  EXPECT_EQ(Logger::GetLogger("a")->getEffectiveLevel(), Logger::Info);
}

TEST_F(LogConfigTest, AChangeReachesLoggersThatHaveRememberedTheirLevel) {
  configure("log: ERROR\nlogger.memory.log: DISABLED\n");
  EXPECT_EQ(inChild([] {
              Logger::SetBufferActive(true);
              configure("log: ERROR\nlogger.memory.log: DISABLED\n");
              const auto logger = Logger::GetLogger("remembers.much");
              EXPECT_FALSE(logger->isEnabled(Logger::Info));
              configure("log: INFO\nlogger.memory.log: DEBUG\nlogger.memory.log.x: WARN\n");
              EXPECT_TRUE(logger->isEnabled(Logger::Info));
              EXPECT_FALSE(logger->isEnabled(Logger::Debug)) << "the memory level stays as remembered";
              EXPECT_TRUE(Logger::GetLogger("remembers.nothing")->isEnabled(Logger::Debug));
              EXPECT_EQ(Logger::GetLogger("x")->getEffectiveMemoryLevel(), Logger::Warn);
              configure("logger.memory.log: NONE\n");
              EXPECT_EQ(Logger::GetLogger("")->getEffectiveMemoryLevel(), Logger::Info);
            }),
            0);
  EXPECT_EQ(syslogd.texts(), complaints({"Circular buffer log level cannot be NONE. Using 'INFO'."}));
}

// openlog is called once in a process: each row takes a new one, which runs this test alone.
TEST(NewProcess, DISABLED_LogsOneLine) {
  Props(false, true);
  VESK_LOG_TO("a", Info, "line");
}

TEST_F(LogConfigTest, AProgramMayShowItsNumberToSyslogOrNot) {
  const std::map<std::string, std::string> senders{{"", "log_config_test[#]"},
                                                   {"log_config_test: false", "log_config_test"},
                                                   {"x: 0", "log_config_test[#]"}};
  for (const auto& row : senders) {
    std::ofstream("/etc/velmora/velmora.conf") << "logger.openlog." << row.first;
    const std::string self = std::filesystem::read_symlink("/proc/self/exe");
    EXPECT_EQ(system((self + " --gtest_also_run_disabled_tests --gtest_filter=NewProcess.* >&2").c_str()), 0);
    const auto lines = syslogd.take();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(std::regex_replace(lines[0].sender, std::regex("[0-9]+"), "#"), row.second) << row.first;
  }
}

TEST_F(LogConfigTest, ProgramsAreIgnoredByTheirExactNames) {
  configure("logger.program.ignore: sshd, \"a b\"\n");
  for (const char* name : {"sshd", "a b"}) EXPECT_TRUE(Logger::GetLogger("")->ignoreProgram(name)) << name;
  for (const char* name : {"SSHD", "ssh", ""})
    EXPECT_FALSE(Logger::GetLogger("")->ignoreProgram(name)) << name;
}

TEST_F(LogConfigTest, WithoutConfigurationSyslogOrDirectoriesAProgramRunsOn) {
  EXPECT_EQ(inChild([] {
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
            }),
            0);
  EXPECT_EQ(syslogd.texts(), Texts());
}

std::atomic<bool> gStop{false};
void* logAll(void*) {
  for (int i = 0; !gStop; ++i) VESK_LOG_TO("t." + std::to_string(i % 50), Debug, "line %d", i);
  return nullptr;
}

TEST_F(LogConfigTest, ThreadsLogAcrossChangesAndNoLevelSticks) {
  const std::string file = "logger.destination: /var/log/change.log\nlogger.memory.log: DISABLED\n";
  configure(file);
  std::list<Thread> threads(3);
  for (Thread& thread : threads) thread.start(nullptr, logAll, nullptr, 0);
  for (int i = 0; i < 40; ++i) configure(file + (i % 2 == 0 ? "log: DISABLED\n" : "log: DEBUG\nlog.x: y\n"));
  configure(file);
  gStop = true;
  for (Thread& thread : threads) thread.join();
  for (int i = 0; i < 50; ++i) {
    const auto logger = Logger::GetLogger("t." + std::to_string(i));
    EXPECT_TRUE(logger->isEnabled(Logger::Info)) << i;
    EXPECT_FALSE(logger->isEnabled(Logger::Debug)) << i;
  }
}

}  // namespace
