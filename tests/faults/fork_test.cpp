// Forks of a program whose threads use the library: for the first time, all parts at once, or blocked in a
// log without a reader. Every child can use it too, and none hangs.

#include <syslog.h>

#include "tests/support/standin_process.h"
#include "tests/support/syslog_socket.h"
#include "tests/support/workers.h"
#include "tests/support/world_test.h"

using namespace testsupport;
using namespace vesk;

// For the thread sanitizer: a child cannot join the threads of its parent.
extern "C" const char* __tsan_default_options() {
  return "report_thread_leaks=0";
}

extern "C" const char* __progname;

namespace {

constexpr int kForks = 40;
constexpr unsigned kPatience = 60;  // seconds after which a child that hangs is ended
constexpr char kUser[] = "lquispe";

void expect(const std::string& value, const char* expected) {
  if (value != expected) throw std::runtime_error(value + " instead of " + expected);
}

void logLine() {
  VESK_LOG_TO("fork.test", Info, "a line of %d", static_cast<int>(getpid()));
}

// The work of the threads and of the children.
constexpr void (*kWorks[])() = {
    logLine,
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

// Runs first, in processes that have not used the library yet. The threads are not announced to the library.
TEST(FirstUse, IsSafeInSeveralThreadsAndOverForks) {
  if (strstr(SANITIZERS, "address"))
    GTEST_SKIP() << "the address sanitizer cannot be forked by a busy program";
  if (strstr(SANITIZERS, "thread"))
    GTEST_SKIP() << "the thread sanitizer's pthread_once hangs in a child, unlike the C library's";
  if (!inPrivateWorld()) GTEST_SKIP() << "only in the private world";
  constexpr int kProcesses = 150, kThreads = 3;
  constexpr void (*kUses[])() = {logLine, [] { GetDictionaryMap(); },
                                 [] { GetSetting(SETTING_DOMAIN_NAME, ""); },
                                 [] { RunQueue::getRunQueue("fork.queue", true, 10); }};
  const auto useAll = [&](int first) {
    for (int i = 0; i < 4; ++i) kUses[(first + i) % 4]();
  };
  std::ofstream(paths::kConfigFile) << "logger.destination: /var/log/first.log\n";
  const auto process = [&] {
    alarm(kPatience);
    std::atomic<int> started{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
      threads.emplace_back([&, i] {
        for (++started; started < kThreads + 1;) {
        }
        useAll(i);
      });
    ++started;
    for (int i = 0; i < 3; ++i) EXPECT_EQ(inChild([&] { alarm(kPatience), useAll(i); }), 0);
    for (std::thread& thread : threads) thread.join();
  };
  for (int i = 0; i < kProcesses && !HasFailure(); ++i) EXPECT_EQ(inChild(process), 0) << "process " << i;
}

class ForkTest : public WorldTest {
 protected:
  void SetUp() override {
    WorldTest::SetUp();
    if (IsSkipped()) return;
    configure("fork.key: value\n");
    put(std::string(paths::kDataDir) + "kset.domain", "example.com\n");
    m_standin = std::make_unique<StandinProcess>();
  }
  void TearDown() override {
    m_standin.reset();
    WorldTest::TearDown();
  }

  void ask() {
    LocalRpcSession session(m_standin->socket(), false, true);
    expect(session.getUser(kUser, 0)->unixName(), kUser);
  }

  // Whether the thread sleeps in a system call.
  static bool isAsleep(pid_t thread) {
    return get("/proc/self/task/" + std::to_string(thread) + "/stat").find(") S ") != std::string::npos;
  }

  // Repeats the work in another thread.
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

// The child still holds the forking thread's locks, and can release them.
TEST_F(ForkTest, AThreadThatHoldsALockMayFork) {
  const Thread soThatLocksCount;
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

TEST_F(ForkTest, AChildReloadsWhatAnotherThreadWasChanging) {
  Properties& properties = *Props(false, false);
  put(paths::kConfigFile, "fork.key: new\n");
  Gate held, over;
  Worker changing([&] {
    Lock lock(properties.mutex);
    held.open();
    over.wait();
  });
  held.wait();
  checkInChild([] { expect(Props(false, false)->getString("fork.key"), "new"); });
  over.open();
}

// The kernel accepts some lines; then the logging thread blocks, with the C library's syslog lock held. The
// fork does not wait for it. The child must not use that lock, but its line arrives.
TEST_F(ForkTest, AStalledSyslogBlocksNeitherForksNorChildren) {
  alarm(kPatience);
  SyslogSocket syslogd;
  ::configure("");
  syslogd.pause();
  std::atomic<pid_t> logger{0};
  std::thread busy([&] {
    logger = gettid();
    for (int i = 0; i < 100; ++i) logLine();
  });
  while (logger == 0 || !isAsleep(logger)) sched_yield();
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
  char byte = 0;
  const pid_t child = fork();
  if (child == 0) {
    alarm(kPatience);
    logLine();  // lost: there is no reader
    __progname = "fork\ntest";
    const bool goesOn = write(ends[0], "x", 1) == 1 && read(ends[0], &byte, 1) == 1;
    _exit(goesOn ? (logLine(), 0) : 1);
  }
  EXPECT_EQ(read(ends[1], &byte, 1), 1);
  syslogd.resume();
  busy.join();
  syslogd.texts();
  EXPECT_EQ(write(ends[1], "x", 1), 1);
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  const std::vector<SyslogLine> lines = syslogd.take();
  ASSERT_EQ(lines.size(), 1u);
  const std::string number = std::to_string(child);
  EXPECT_EQ(lines[0].text, "INFO  fork.test a line of " + number);
  EXPECT_EQ(lines[0].sender, "fork\\x0atest[" + number + "]");
  EXPECT_EQ(lines[0].priority, LOG_AUTH | LOG_INFO);
  for (const int end : ends) close(end);
  alarm(0);
}

}  // namespace
