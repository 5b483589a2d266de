// A program whose threads log, read and reload the configuration, read and save settings, ask the daemon and
// use the queues, while it forks: every child does all of that too, and none hangs.

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <thread>
#include <vector>

#include "lrpc/session.h"
#include "lrpc/unixviews.h"
#include "tests/standin/standin_process.h"
#include "tests/support/world_test.h"
#include "util/include/log.h"
#include "util/include/runqueue.h"
#include "util/include/setting.h"
#include "util/include/thread.h"

using namespace testsupport;
using namespace vesk;

namespace {

constexpr int kForks = 40;
constexpr unsigned kPatience = 60;  // seconds after which a child that hangs is ended
constexpr char kUser[] = "lquispe";

void logLine() {
  VESK_LOG_TO("fork.test", Info, "a line of %d", static_cast<int>(getpid()));
}
void readProperties() {
  const std::string value = Props(false, false)->getString("fork.key");
  if (value != "value") throw SystemException("fork", 0, "a property is lost", "vesk::SystemException", 0);
}
void reloadProperties() {
  Props(false, true);
  readProperties();
}
void reloadInPlace() {
  Props(false, false)->reload();
}
void loadPrivately() {
  Properties().load(paths::kConfigFile, true);
}
void readSetting() {
  clearSettingsMap();
  if (GetSetting(SETTING_DOMAIN_NAME, "") != "example.com")
    throw SystemException("fork", 0, "a setting is lost", "vesk::SystemException", 0);
}
void storeSetting() {
  ::vesk::saveSetting(SETTING_MACHINE_SITE, "site", SETTING_PUBLIC, false, true);
}
void useQueue() {
  RunQueue::getRunQueue("fork.queue", true, 10);
}

constexpr void (*kWorks[])() = {
    logLine,       readProperties, reloadProperties, reloadInPlace,
    loadPrivately, readSetting,    storeSetting,     useQueue,
};

class ForkTest : public WorldTest {
 protected:
  void SetUp() override {
    WorldTest::SetUp();
    if (IsSkipped()) return;
    configure("fork.key: value\n");
    put(std::string(paths::kDataDir) + "kset.domain", "example.com\n");
    m_standin = std::make_unique<StandinProcess>();
    Thread::SetThreadsActive(true);
  }
  void TearDown() override {
    Thread::SetThreadsActive(false);
    m_standin.reset();
    WorldTest::TearDown();
  }

  void ask() {
    LocalRpcSession session(m_standin->socket(), false, true);
    if (session.getUser(kUser, 0)->unixName() != kUser) abort();
  }

  // Runs the work over and over in a thread of its own.
  template <class Work>
  void keepBusy(Work work) {
    m_threads.emplace_back([this, work] {
      try {
        while (!m_over) work();
      } catch (const VESKException& failure) {
        ADD_FAILURE() << failure.what();
      }
    });
  }
  void endThreads() {
    m_over = true;
    for (std::thread& thread : m_threads) thread.join();
  }

  // The wait status of a child that has done everything.
  int forkOnce() {
    fflush(nullptr);
    const pid_t child = fork();
    if (child != 0) {
      int status = -1;
      waitpid(child, &status, 0);
      return status;
    }
    alarm(kPatience);
    try {
      for (const auto work : kWorks) work();
      ask();
      logLine();
    } catch (const std::exception& failure) {
      fprintf(stderr, "in the child: %s\n", failure.what());
      _exit(1);
    }
    _exit(0);
  }

  std::unique_ptr<StandinProcess> m_standin;
  std::vector<std::thread> m_threads;
  std::atomic<bool> m_over{false};
};

TEST_F(ForkTest, ChildrenOfABusyProgramWork) {
  for (const auto work : kWorks) keepBusy(work);
  keepBusy([this] { ask(); });
  for (int i = 0; i < kForks; ++i) ASSERT_EQ(forkOnce(), 0) << "fork " << i;
  endThreads();
}

// The child's holds are those of the thread that forked: it can go on and give them back.
TEST_F(ForkTest, AHolderMayFork) {
  Mutex& mutex = Props(false, false)->mutex;
  Lock properties(mutex);
  Lock twice(mutex);
  EXPECT_EQ(inChild([&] {
              EXPECT_EQ(mutex.lockDepth(), 2u);
              twice.unLock();
              properties.unLock();
              EXPECT_EQ(mutex.owner(), pthread_t{});
            }),
            0);
}

}  // namespace
