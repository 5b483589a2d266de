// The background thread: order, a full queue, its end, forks.

#include "tests/support/scratch_test.h"
#include "tests/support/syslog_socket.h"
#include "tests/support/workers.h"

using namespace vesk;
using testsupport::checkInChild;

// By default the thread sanitizer does not allow threads in a forked child.
extern "C" const char* __tsan_default_options() {
  return "die_after_fork=0";
}

namespace {

constexpr char kFile[] = "/var/log/queue.log";

std::string toFile(const std::string& more) {
  return std::string("logger.destination: ") + kFile + "\nlogger.file.flush.frequency: 1\n" + more;
}

class LogQueueTest : public ::testing::Test {
 protected:
  LogQueueTest() { unlink(kFile); }
  ~LogQueueTest() override {
    Logger::stopThread({});
    configure("");
  }

  RecordedPauses pauses;
};

TEST_F(LogQueueTest, StartAndStopAreLogged) {
  configure(toFile("log: DEBUG\nlogger.queue.size: 30\nlog.util: INFO\n"));
  const auto logger = Logger::GetLogger("own");
  Logger::startThread(logger);
  Logger::startThread(logger);
  VESK_LOG(logger, Info, "line");
  Logger::stopThread(logger);
  Logger::stopThread(logger);
  EXPECT_EQ(Thread::m_threadsActive, 0);
  EXPECT_EQ(linesOf(kFile), (Texts{"DEBUG own starting background log thread", "INFO  own line",
                                   "DEBUG own stopped background log thread"}));

  configure(toFile("logger.queue.size: 0\n"));
  Logger::startThread(logger);
  EXPECT_EQ(linesOf(kFile).back(), "WARN  own LogQueue disabled.  Recommended for debugging only.");
}

// Without a reader of the socket the runner blocks in syslog, and the queue fills up. It has room for four
// times as much while "log" is at DEBUG.
TEST_F(LogQueueTest, AFullQueueDropsTheNewestWithAWarning) {
  constexpr int kLines = 600;
  const std::string warning =
      "ERROR log Warning: Zantrel logger dropping messages:(runqueue full 16) Please insure syslog is "
      "running correctly or increase the value of logger.queue.size in velmora.conf.";
  const auto logger = Logger::GetLogger("full");
  for (const char* configuration : {"logger.queue.size: 16\n", "logger.queue.size: 4\nlog.log: DEBUG\n"}) {
    configure(configuration);
    SyslogSocket syslogd;
    syslogd.pause();
    Logger::startThread(logger);
    for (int i = 0; i < kLines; ++i) VESK_LOG(logger, Info, "%d", i);
    syslogd.resume();
    Logger::stopThread(logger);
    const Texts texts = syslogd.texts();
    int numbers = 0, last = -1, number;
    for (const std::string& text : texts) {
      if (sscanf(text.c_str(), "INFO  full %d", &number) != 1) continue;
      EXPECT_GT(number, last);
      last = number;
      ++numbers;
    }
    EXPECT_EQ(texts[0], "INFO  full 0");
    EXPECT_GE(numbers, 15) << "the newest of a full queue made room for the warning";
    EXPECT_LT(numbers, kLines);
    EXPECT_GT(std::count(texts.begin(), texts.end(), warning), 0);
  }
}

void writeLines(const char* name, int lines) {
  Logger::SetThreadName(name);
  for (int i = 0; i < lines; ++i) VESK_LOG_TO("many", Info, "%d", i);
}

// The queue is switched on and off while threads log, and the configuration changes and logs warnings. A
// small queue drops lines, but posters, the runner's report and the reload never wait for each other.
TEST_F(LogQueueTest, EveryLineIsWrittenOnceAndInItsThreadsOrder) {
  for (const char* size : {"2", "100000"}) {
    unlink(kFile);
    const std::string configuration = toFile(std::string("logger.queue.size: ") + size + "\n");
    configure(configuration);
    std::list<Worker> threads;
    for (const char* name : {"a", "b", "c"}) threads.emplace_back([=] { writeLines(name, 1500); });
    int complaints = 0;
    for (; complaints < 30; ++complaints) {
      Logger::startThread({});
      configure(configuration + "log.x: bad\n");
      Logger::stopThread({});
    }
    threads.clear();
    if (*size == '2') continue;
    std::map<std::string, int> seen;
    for (const std::string& line : linesOf(kFile)) {
      char name[8];
      int number = 0;
      if (sscanf(line.c_str(), "INFO  <%7[a-c]> many %d", name, &number) == 2)
        EXPECT_EQ(number, seen[name]++) << line;
      else
        --complaints;
    }
    for (const char* name : {"a", "b", "c"}) EXPECT_EQ(seen[name], 1500) << name;
    EXPECT_EQ(complaints, 0);
  }
}

TEST_F(LogQueueTest, AForkLeavesBothSidesWriting) {
  configure(toFile("logger.queue.size: 100000\n"));
  const auto logger = Logger::GetLogger("fork");
  Logger::startThread({});
  Worker busy([] { writeLines("busy", 1000); });
  while (linesOf(kFile).empty()) sched_yield();  // the background thread is running
  constexpr int kChildren = 10;
  for (int i = 0; i < kChildren; ++i) {
    checkInChild([&] {
      VESK_LOG(logger, Info, "child %d", i);
      Logger::stopThread({});
      Logger::startThread({});
      VESK_LOG(logger, Info, "child %d again", i);
      Logger::stopThread({});
      configure(toFile(""));
    });
    VESK_LOG(logger, Info, "parent %d", i);
  }
  busy.join();
  Logger::stopThread({});
  std::map<std::string, int> seen;
  for (const std::string& line : linesOf(kFile)) ++seen[line];
  EXPECT_EQ(seen.size(), 1000u + 3 * kChildren);
  for (const auto& line : seen) EXPECT_EQ(line.second, 1) << line.first;
}

}  // namespace
