
#include "tests/support/thrown.h"
#include "tests/support/workers.h"

using testsupport::thrownBy;
using vesk::Lock;
using vesk::MaxWaitMutex;
using vesk::Mutex;
using vesk::Thread;

/// With a Thread object, so that locks take effect.
class LockTest : public testing::Test {
 protected:
  bool freeForOthers() {
    bool got = false;
    Worker([&] { got = mutex.tryLock() && (mutex.unLock(), true); });
    return got;
  }

  Thread threaded;
  Mutex mutex;
};

TEST(LockWithoutThreads, HoldsNothingAndWaitsOutItsTime) {
  MaxWaitMutex mutex(1);
  Lock lock(mutex);
  EXPECT_FALSE(lock.isLocked() || Lock(mutex, 0, 0).isLocked() || lock.wait(0, 0));
  mutex.lock();
  EXPECT_TRUE(mutex.tryLock());
  EXPECT_EQ(mutex.lockDepth(), 0u);
  EXPECT_NO_THROW(mutex.unLock());
}

TEST(LockWithoutThreads, HoldsOnceTheProcessHasAnySecondThread) {
  Mutex mutex;
  Lock before(mutex);
  std::thread([&] { EXPECT_TRUE(Lock(mutex).isLocked()); }).join();
  EXPECT_EQ(Thread::m_threadsActive, 0);
  EXPECT_FALSE(before.isLocked()) << "a lock that held nothing holds nothing to its end";
  Lock after(mutex);
  EXPECT_TRUE(after.isLocked());
  before.unLock();
  EXPECT_EQ(mutex.lockDepth(), 1u);
}

TEST_F(LockTest, RecursiveLocksAreCountedAndTheLastUnlockFrees) {
  Lock outer(mutex);
  Lock inner(mutex);
  EXPECT_EQ(mutex.lockDepth(), 2u);
  inner.unLock();
  inner.unLock();
  EXPECT_EQ(mutex.owner(), pthread_self());
  EXPECT_FALSE(freeForOthers());
  outer.unLock();
  EXPECT_EQ(mutex.owner(), pthread_t{});
  EXPECT_TRUE(freeForOthers());
  outer.doLock();
  outer.doLock();
  EXPECT_EQ(mutex.lockDepth(), 1u);
}

TEST_F(LockTest, AWaitReleasesEveryHoldAndRestoresIt) {
  Lock outer(mutex);
  Lock inner(mutex);
  bool done = false;
  Worker other([&] {
    Lock lock(mutex);
    done = true;
    mutex.signalAll();
  });
  while (!done) EXPECT_TRUE(inner.wait(std::numeric_limits<long>::max(), 0));
  EXPECT_EQ(mutex.lockDepth(), 2u);
  inner.unLock();
  EXPECT_FALSE(freeForOthers());
}

TEST_F(LockTest, WaitsEndAtTheirDeadlineAndRefuseABadOne) {
  Lock lock(mutex);
  EXPECT_FALSE(lock.wait(0, 0)) << "the current second has begun already";
  const MovedDay later(3600);
  const timespec past{time(nullptr) + 1800, 0};
  EXPECT_FALSE(mutex.wait(&past));
  EXPECT_EQ(mutex.lockDepth(), 1u);
  EXPECT_EQ(thrownBy([&] { lock.wait(0, -1); }), "SystemException 22 OS call failed: Invalid argument");
  lock.unLock();
  EXPECT_TRUE(freeForOthers());
}

TEST_F(LockTest, SignalsWakeOneOrAll) {
  int permits = 0;
  Gate waiting, woken;
  std::list<Worker> workers;
  for (int i = 0; i < 3; ++i)
    workers.emplace_back([&] {
      Lock lock(mutex);
      waiting.open();
      while (permits == 0) mutex.wait(nullptr);
      --permits;
      woken.open();
    });
  waiting.wait(3);
  for (const bool all : {false, true}) {
    Lock lock(mutex);  // so that the others are now waiting
    permits = all ? 2 : 1;
    all ? mutex.signalAll() : mutex.signalOne();
    lock.unLock();
    woken.wait(all ? 3 : 1);
  }
}

TEST_F(LockTest, CancellationStaysPendingUntilTheOutermostUnLockAndSparesAnException) {
  for (const bool throws : {false, true}) {
    bool cameToUnLock = false, caught = false, survived = false;
    cancelAt([&](auto point) {
      try {
        Lock outer(mutex);
        Lock inner(mutex);
        point();
        if (throws) throw std::runtime_error("unwinds the guards");
        Thread::yield();
        inner.unLock();
        cameToUnLock = true;
        outer.unLock();
        survived = true;
      } catch (const std::runtime_error&) {
        caught = true;
      }
      Thread::yield();
      survived = true;
    });
    EXPECT_TRUE(throws ? caught : cameToUnLock);
    EXPECT_FALSE(survived);
    EXPECT_TRUE(freeForOthers());
  }
}

TEST_F(LockTest, APollingLockGetsTheMutexOnceItIsFree) {
  Gate started;
  mutex.lock();
  Worker worker([&] {
    started.open();
    EXPECT_TRUE(Lock(mutex, 0, 1000).isLocked());
  });
  started.wait();
  mutex.unLock();
}

TEST_F(LockTest, MaxWaitMutexRefusesTheCallerOverTheLimit) {
  MaxWaitMutex limited(2);
  limited.lock();
  // A waiter may collide with the brief attempt below, and then tries again.
  const auto waitInLine = [&] {
    for (bool got = false; !got;) try {
        got = Lock(limited).isLocked();
      } catch (const vesk::TryAgainException&) {
      }
  };
  Worker first(waitInLine), second(waitInLine);
  Worker([&] {
    EXPECT_EQ(thrownBy([&] {
                while (!limited.tryLock()) sched_yield();
              }),
              "TryAgainException 11 too many clients waiting for mutex (configure more threads?)");
    EXPECT_THROW(Lock{limited}, vesk::TryAgainException);
    int cancelState = -1;
    pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, &cancelState);
    EXPECT_EQ(cancelState, PTHREAD_CANCEL_ENABLE);
  });
  EXPECT_TRUE(limited.tryLock()) << "the holder is never refused";
  limited.unLock();
  limited.unLock();
  first.join();
  second.join();
  EXPECT_TRUE(limited.tryLock()) << "those who came through count no more";
  limited.unLock();
}
