// The background thread: order, a full queue, its end, forks.

#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <map>

#include "tests/support/scratch_test.h"
#include "tests/support/syslog_socket.h"
#include "util/include/log.h"
#include "util/include/pause.h"
#include "util/include/runqueue.h"
#include "util/include/thread.h"

using namespace vesk;
using testsupport::inChild;

// The thread sanitizer allows a forked child no thread of its own otherwise.
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
  void SetUp() override {
    pause::replacement = [](long) { sched_yield(); };
    unlink(kFile);
  }
  void TearDown() override {
    Logger::stopThread({});
    configure("");
    pause::replacement = nullptr;
  }
};

TEST_F(LogQueueTest, StartAndStopTellWhatTheyDo) {
  configure(toFile("log: DEBUG\nlogger.queue.size: 30\nlog.util: INFO\n"));
  const auto logger = Logger::GetLogger("own");
  Logger::startThread(logger);
  Logger::startThread(logger);
  for (int i = 0; i < 20; ++i) VESK_LOG(logger, Info, "%d", i);
  Logger::stopThread(logger);
  Logger::stopThread(logger);
  EXPECT_EQ(Thread::m_threadsActive, 0);
  Texts expected{"DEBUG own starting background log thread"};
  for (int i = 0; i < 20; ++i) expected.push_back("INFO  own " + std::to_string(i));
  expected.push_back("DEBUG own stopped background log thread");
  EXPECT_EQ(linesOf(kFile), expected);

  configure(toFile("logger.queue.size: 0\n"));
  Logger::startThread(logger);
  EXPECT_EQ(linesOf(kFile).back(), "WARN  own LogQueue disabled.  Recommended for debugging only.");
}

// Nobody reads the socket: the runner waits in syslog, and after some lines the queue is full.
void overflow(const char* configuration) {
  configure(configuration);
  SyslogSocket syslogd;
  const auto logger = Logger::GetLogger("full");
  constexpr int kLines = 600;
  syslogd.pause();
  Logger::startThread(logger);
  for (int i = 0; i < kLines; ++i) VESK_LOG(logger, Info, "%d", i);
  syslogd.resume();
  Logger::stopThread(logger);
  const Texts texts = syslogd.texts();
  const std::string warning =
      "ERROR log Warning: Zantrel logger dropping messages:(runqueue full 16) Please insure syslog is "
      "running correctly or increase the value of logger.queue.size in velmora.conf.";
  int numbers = 0, last = -1, number;
  for (const std::string& text : texts) {
    if (sscanf(text.c_str(), "INFO  full %d", &number) != 1) continue;
    EXPECT_GT(number, last);
    last = number;
    ++numbers;
  }
  EXPECT_EQ(texts[0], "INFO  full 0");
  EXPECT_GT(numbers, 15);
  EXPECT_LT(numbers, kLines);
  EXPECT_GT(std::count(texts.begin(), texts.end(), warning), 0);
}

// The queue has room for four times as much while "log" is at DEBUG.
TEST_F(LogQueueTest, AFullQueueDropsTheNewestWithAWarning) {
  overflow("logger.queue.size: 16\n");
  overflow("logger.queue.size: 4\nlog.log: DEBUG\n");
}

struct Writer {
  const char* name;
  int lines;
};

void* writeLines(void* argument) {
  const auto* writer = static_cast<Writer*>(argument);
  Logger::SetThreadName(writer->name);
  for (int i = 0; i < writer->lines; ++i) VESK_LOG_TO("many", Info, "%d", i);
  return nullptr;
}

// The queue comes and goes while threads log, and the configuration changes with complaints of its own. With
// a small queue lines are dropped, but posters, the runner's report and the reload never wait for each other.
TEST_F(LogQueueTest, EveryLineIsWrittenOnceAndInItsThreadsOrder) {
  for (const char* size : {"2", "100000"}) {
    unlink(kFile);
    const std::string configuration = toFile(std::string("logger.queue.size: ") + size + "\n");
    configure(configuration);
    Writer writers[] = {{"a", 1500}, {"b", 1500}, {"c", 1500}};
    std::list<Thread> threads(3);
    int next = 0, complaints = 0;
    for (Thread& thread : threads) thread.start(nullptr, writeLines, &writers[next++], 0);
    for (; complaints < 30; ++complaints) {
      Logger::startThread({});
      configure(configuration + "log.x: bad\n");
      Logger::stopThread({});
    }
    for (Thread& thread : threads) thread.join();
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
    for (const Writer& writer : writers) EXPECT_EQ(seen[writer.name], writer.lines) << writer.name;
    EXPECT_EQ(complaints, 0);
  }
}

TEST_F(LogQueueTest, AForkLeavesBothSidesWriting) {
  configure(toFile("logger.queue.size: 100000\n"));
  const auto logger = Logger::GetLogger("fork");
  Logger::startThread({});
  Writer writer{"busy", 1000};
  Thread busy;
  busy.start(nullptr, writeLines, &writer, 0);
  while (linesOf(kFile).empty()) sched_yield();  // the background thread has come up
  constexpr int kChildren = 10;
  for (int i = 0; i < kChildren; ++i) {
    EXPECT_EQ(inChild([&] {
                VESK_LOG(logger, Info, "child %d", i);
                Logger::stopThread({});
                Logger::startThread({});
                VESK_LOG_TO("fork", Info, "child %d again", i);
                Logger::stopThread({});
                configure(toFile(""));
              }),
              0);
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
