// A program whose threads log, read and reload the configuration, read and save settings, ask the daemon and
// use the queues, while it forks: every child does all of that too, and none hangs.

#include <unistd.h>

#include <atomic>
#include <cstring>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <fokrazo/log.h>
#include <fokrazo/runqueue.h>
#include <fokrazo/session.h>
#include <fokrazo/setting.h>
#include <fokrazo/thread.h>
#include <fokrazo/unixviews.h>
#include "tests/support/standin_process.h"
#include "tests/support/world_test.h"

using namespace testsupport;
using namespace vesk;

namespace {

constexpr int kForks = 40;
constexpr unsigned kPatience = 60;  // seconds after which a child that hangs is ended
constexpr char kUser[] = "lquispe";

void expect(const std::string& value, const char* expected) {
  if (value != expected) throw std::runtime_error(value + " instead of " + expected);
}

// What threads do at any time, and children too.
constexpr void (*kWorks[])() = {
    [] { VESK_LOG_TO("fork.test", Info, "a line of %d", static_cast<int>(getpid())); },
    [] { expect(Props(false, false)->getString("fork.key"), "value"); },
    [] { expect(Props(false, true)->getString("fork.key"), "value"); },
    [] { Props(false, false)->reload(); },
    [] { Properties().load(paths::kConfigFile, true); },
    [] {
      clearSettingsMap();
      expect(GetSetting(SETTING_DOMAIN_NAME, ""), "example.com");
    },
    [] { saveSetting(SETTING_MACHINE_SITE, "site", SETTING_PUBLIC, false, true); },
    [] { RunQueue::getRunQueue("fork.queue", true, 10); },
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
    expect(session.getUser(kUser, 0)->unixName(), kUser);
  }

  // Runs the work over and over in a thread of its own.
  template <class Work>
  void keepBusy(Work work) {
    m_threads.emplace_back([this, work] {
      try {
        while (!m_over) work();
      } catch (const std::exception& failure) {
        ADD_FAILURE() << failure.what();
      }
    });
  }

  std::unique_ptr<StandinProcess> m_standin;
  std::vector<std::thread> m_threads;
  std::atomic<bool> m_over{false};
};

// The address sanitizer's allocator keeps its locks over a fork: a child could wait for one that another
// thread of its parent held.
TEST_F(ForkTest, ChildrenOfABusyProgramWork) {
  if (strstr(SANITIZERS, "address"))
    GTEST_SKIP() << "the address sanitizer cannot be forked by a busy program";
  for (const auto work : kWorks) keepBusy(work);
  keepBusy([this] { ask(); });
  const auto child = [this] {
    alarm(kPatience);
    for (const auto work : kWorks) work();
    ask();
    kWorks[0]();
  };
  for (int i = 0; i < kForks && !HasFailure(); ++i) EXPECT_EQ(inChild(child), 0) << "fork " << i;
  m_over = true;
  for (std::thread& thread : m_threads) thread.join();
}

// The child's holds are those of the thread that forked: it can go on and give them back.
TEST_F(ForkTest, AHolderMayFork) {
  Mutex& mutex = Props(false, false)->mutex;
  Lock properties(mutex);
  Lock twice(mutex);
  checkInChild([&] {
    EXPECT_EQ(mutex.lockDepth(), 2u);
    twice.unLock();
    properties.unLock();
    EXPECT_EQ(mutex.owner(), pthread_t{});
  });
}

}  // namespace
