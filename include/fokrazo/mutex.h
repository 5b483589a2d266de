/// Locks: a recursive mutex with its own condition variable, and the scoped guard that all code uses. In a
/// single-threaded process a guard costs two comparisons and does nothing.
#pragma once

#include <pthread.h>
#include <ctime>

#include <atomic>

#include <fokrazo/export.h>
#include <fokrazo/thread.h>
#include <fokrazo/thread_annotations.h>

namespace vesk {

/// A recursive mutex and one condition variable. Take it through Lock.
/// A failing pthread call throws SystemException "OS call failed: …" with the error as code. Thread-safe.
class FOKRAZO_CAPABILITY("mutex") FOKRAZO_API Mutex {
 public:
  /// An unlocked mutex. A failure is only reported to syslog.
  Mutex();
  /// Requires: unlocked. Never throws.
  virtual ~Mutex();

  /// Blocks until the caller holds the mutex; the holder may lock it again.
  virtual void lock() FOKRAZO_ACQUIRE();
  /// Releases one hold.
  virtual void unLock() FOKRAZO_RELEASE();
  /// As lock, but returns false immediately if another thread holds it.
  virtual bool tryLock() FOKRAZO_TRY_ACQUIRE(true);

  /// Releases all holds, waits for a signal, and takes the same number of holds again. `deadline` is
  /// absolute, on CLOCK_REALTIME; null waits without limit. Returns false on time-out and true when woken,
  /// perhaps spuriously. In a single-threaded process, where nothing can signal, it sleeps until the deadline
  /// and returns false, or without a deadline sleeps one second and returns true.
  bool wait(const timespec* deadline);
  /// Wake one waiter, or all. Do nothing in a single-threaded process.
  void signalOne();
  void signalAll();

  /// The number of holds. Requires: held by the caller, or free.
  unsigned int lockDepth() const { return m_lockDepth; }
  /// The holder, 0 while the mutex is free.
  pthread_t owner() const { return m_owner.load(std::memory_order_relaxed); }

  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;

 protected:
  /// Whether the calling thread holds it. Needs no lock: no other thread sets the owner to the caller.
  bool isOwner() const;

 private:
  friend bool lockUntil(Mutex& mutex, const timespec& deadline);

  void taken();

  pthread_mutex_t m_mutex{};
  pthread_cond_t m_condition{};
  unsigned int m_lockDepth = 0;  // written only by the holder
  std::atomic<pthread_t> m_owner{};
};

/// A mutex that refuses callers when too many are waiting. Does nothing in a single-threaded process.
class FOKRAZO_API MaxWaitMutex : public Mutex {
 public:
  /// Lets `maxWaiters` callers wait; 0 means no limit.
  explicit MaxWaitMutex(int maxWaiters);

  /// As Mutex. @throws TryAgainException (EAGAIN) too many callers are already waiting; the holder is never
  /// refused
  void lock() override FOKRAZO_ACQUIRE();
  bool tryLock() override FOKRAZO_TRY_ACQUIRE(true);
  /// Does nothing for a hold that was taken before locks counted.
  void unLock() override FOKRAZO_RELEASE();

 private:
  class Waiter;

  int m_maxWaiters;
  Mutex m_waitersProtect;
  int m_waiters FOKRAZO_GUARDED_BY(m_waitersProtect) = 0;  // callers now in lock or tryLock
};

/// Holds a mutex until the end of the scope and keeps the thread from being cancelled meanwhile. Belongs to
/// one thread. Does nothing if Thread::locksCount() is false at construction, even if another thread is
/// started later; doLock checks again.
class FOKRAZO_SCOPED_CAPABILITY FOKRAZO_API Lock {
 public:
  /// Takes `mutex`, which must outlive the guard. A pending cancellation stays pending until unLock.
  explicit Lock(Mutex& mutex) FOKRAZO_ACQUIRE(mutex) : Lock(mutex, Thread::locksCount()) {}
  /// Takes `mutex` by trying at that interval (0 and 0: 10 ms) until it succeeds.
  Lock(Mutex& mutex, long seconds, long nanoseconds) FOKRAZO_ACQUIRE(mutex);
  /// As unLock. While an exception unwinds the stack, a pending cancellation waits for the next cancellation
  /// point. A cancelled thread unwinds from here. NOLINTNEXTLINE(bugprone-exception-escape)
  ~Lock() noexcept(false) FOKRAZO_RELEASE() {
    if (isLocked()) unLock();
  }

  /// Takes the mutex again after unLock. Does nothing if the guard holds it.
  void doLock() FOKRAZO_ACQUIRE();
  /// Releases the mutex and acts on a pending cancellation. A second call does nothing.
  void unLock() FOKRAZO_RELEASE();
  /// Mutex::wait, with the deadline (current time in whole seconds) + `seconds` + `nanoseconds`, the last
  /// below one second.
  bool wait(long seconds, long nanoseconds);
  /// Whether the guard holds the mutex.
  bool isLocked() const { return m_oldCancelState != kNotLocked; }

  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

 protected:
  /// The guard's mutex.
  Mutex& mutex() const { return *m_mutex; }

 private:
  // `locksCount` is evaluated before any field is set, so that the compiler can predict the destructor.
  Lock(Mutex& mutex, bool locksCount) FOKRAZO_ACQUIRE(mutex) : m_mutex(&mutex) {
    if (__builtin_expect(locksCount, false)) doLock();
  }

  static constexpr int kNotLocked = -1;

  Mutex* m_mutex;
  int m_oldCancelState = kNotLocked;  // restored by unLock
};

/// A Lock on a mutex that is created on first use and never freed. The caller owns the slot that points to
/// it.
class FOKRAZO_SCOPED_CAPABILITY FOKRAZO_API AllocatingLock : public Lock {
 public:
  /// Requires: no two threads use the same empty slot at once.
  explicit AllocatingLock(Mutex** slot) FOKRAZO_ACQUIRE(*slot) : Lock(*allocateMutex(slot)) {}
  ~AllocatingLock() noexcept(false) FOKRAZO_RELEASE() = default;
  /// The slot's mutex; created if the slot is null.
  static Mutex* allocateMutex(Mutex** slot);
};

}  // namespace vesk
