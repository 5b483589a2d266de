
#include "tests/support/syslog_socket.h"
#include "tests/support/thrown.h"
#include "tests/support/workers.h"

using testsupport::thrownBy;
using vesk::Thread;

namespace {

const std::string kNotThere = "SystemException 3 OS call failed: No such process";
const std::string kInvalid = "SystemException 22 OS call failed: Invalid argument";

std::size_t stackSizeOfANewThread() {
  std::size_t size = 0;
  Worker([&] {
    pthread_attr_t attributes;
    pthread_getattr_np(pthread_self(), &attributes);
    pthread_attr_getstacksize(&attributes, &size);
    pthread_attr_destroy(&attributes);
  });
  return size;
}

constexpr auto nothing = [](void*) -> void* { return nullptr; };

}  // namespace

TEST(ThreadTest, AThreadObjectMakesTheProcessThreaded) {
  {
    const Thread one, two;
    EXPECT_EQ(Thread::m_threadsActive, 2);
  }
  EXPECT_EQ(Thread::m_threadsActive, 0);
  for (int i = 0; i < 2; ++i) Thread::SetThreadsActive(true);
  EXPECT_EQ(Thread::m_threadsActive, 2);
  Thread::SetThreadsActive(false);
  EXPECT_EQ(Thread::m_threadsActive, 0);
}

TEST(ThreadTest, EndsByReturnByExitAndByCancellation) {
  Gate never;
  const std::tuple<std::function<void()>, bool, int> rows[] = {
      {[] { EXPECT_TRUE(Thread::getSelf()->isRunning()); }, false, 0},
      {[] { pthread_exit(nullptr); }, false, 1},
      {[&] { never.wait(); }, true, 1},
  };
  EXPECT_EQ(Thread::getSelf(), nullptr);
  for (const auto& [body, cancel, unexpectedEnds] : rows) {
    Worker worker(body);
    if (cancel) worker.kill();
    worker.join();
    EXPECT_EQ(worker.unexpectedEnds, unexpectedEnds);
    EXPECT_EQ(worker.isCancelled(), cancel);
    EXPECT_FALSE(worker.isRunning());
  }
}

TEST(ThreadTest, CallsInTheWrongStateAreHarmless) {
  Thread thread;
  EXPECT_EQ(thrownBy([&] { thread.join(); }), kNotThere) << "never started";
  EXPECT_EQ(thrownBy([&] { thread.detach(); }), kNotThere);
  thread.start("name", nothing, nullptr, 0);
  thread.join();
  thread.join();
  thread.detach();
  thread.cancel();
  EXPECT_FALSE(thread.isCancelled());

  thread.start(nullptr, nothing, nullptr, 0);
  EXPECT_EQ(thread.name(), "name");
  thread.detach();
  thread.join();
  while (thread.isRunning()) sched_yield();
}

TEST(ThreadTest, APendingCancelTakesEffectAtTheNextCancellationPoint) {
  for (const auto call : {+[] { Thread::enableKill(); }, +[] { Thread::sleep(3600, 0); }, Thread::yield}) {
    bool heldBack = false;
    cancelAt([&](auto point) {
      Thread::disableKill();
      point();
      Thread::yield();
      heldBack = true;
      pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, nullptr);
      call();
      ADD_FAILURE() << "the cancel is due";
    });
    EXPECT_TRUE(heldBack);
  }
}

TEST(ThreadTest, SleepAddsUpItsPartsAndASignalInterruptsIt) {
  EXPECT_TRUE(Thread::sleep(0, 1, 999, 999));
  EXPECT_EQ(thrownBy([] { Thread::sleep(0, 1'000'000'000); }), kInvalid) << "a whole second in the fraction";
  EXPECT_EQ(thrownBy([] { Thread::sleep(0, 1000, 0, 0); }), kInvalid);
  EXPECT_EQ(thrownBy([] { Thread::sleep(0, 999, 999, 1000); }), kInvalid);

  struct sigaction action {};
  action.sa_handler = [](int) {};
  sigaction(SIGALRM, &action, nullptr);
  const itimerval every{{0, 10'000}, {0, 10'000}}, off{};
  setitimer(ITIMER_REAL, &every, nullptr);
  EXPECT_FALSE(Thread::sleep(3600, 0));
  setitimer(ITIMER_REAL, &off, nullptr);
}

TEST(ThreadTest, StackSizeAndPriorityFollowTheConfiguration) {
  configure("brondalt.clients.threads.stacksize: 1048576\n");
  EXPECT_EQ(stackSizeOfANewThread(), 1048576u);
  configure("");
  const std::size_t usual = stackSizeOfANewThread();
  configure("brondalt.clients.threads.stacksize: 1\nbrondalt.clients.threads.priority: true\n");
  EXPECT_EQ(stackSizeOfANewThread(), usual) << "an impossible size counts as none";
  Thread neverStarted;
  neverStarted.changePriority(5);  // only logged
  configure("");
}
