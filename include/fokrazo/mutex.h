/// Locks: a recursive mutex with its own condition variable, and the scoped guard through which all code
/// takes it. In a process with no Thread object a guard costs one comparison and does nothing.
#pragma once

#include <pthread.h>
#include <ctime>

#include <atomic>

#include <fokrazo/export.h>
#include <fokrazo/thread.h>
#include <fokrazo/thread_annotations.h>

namespace vesk {

/// A recursive mutex and one condition. Code takes it through Lock.
/// Every failure of the threads interface throws SystemException "OS call failed: …" with the error as code.
class FOKRAZO_CAPABILITY("mutex") FOKRAZO_API Mutex {
 public:
  /// Makes the mutex and the condition. A failure is only reported to syslog.
  Mutex();
  /// Requires: nobody holds it. Never throws.
  virtual ~Mutex();

  /// Blocks until the mutex is held once more by the caller.
  virtual void lock() FOKRAZO_ACQUIRE();
  /// Gives back one hold.
  virtual void unLock() FOKRAZO_RELEASE();
  /// As lock, but false at once if another thread holds it.
  virtual bool tryLock() FOKRAZO_TRY_ACQUIRE(true);

  /// Gives up all holds, waits for a signal, and takes the same number of holds again. `deadline` is
  /// absolute, by the day's clock; null waits without limit. False on time-out, true if woken, perhaps for
  /// nothing. On a mutex that is not held, because no thread is active, nobody could signal: sleeps out the
  /// time and gives false, or true after a second if there is no limit.
  bool wait(const timespec* deadline);
  /// Wake one or all waiters; nothing while no thread is active.
  void signalOne();
  void signalAll();

  /// Number of the owner's holds. Requires: held by the caller, or by nobody.
  unsigned int lockDepth() const { return m_lockDepth; }
  /// The holder, 0 while the mutex is free.
  pthread_t owner() const { return m_owner.load(std::memory_order_relaxed); }

  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;

 protected:
  /// Whether the calling thread holds it. Needs no hold: only the thread that set the owner finds itself
  /// there.
  bool isOwner() const;

 private:
  friend bool lockUntil(Mutex& mutex, const timespec& deadline);

  void taken();

  pthread_mutex_t m_mutex{};
  pthread_cond_t m_condition{};
  unsigned int m_lockDepth = 0;  // written by the holder alone
  std::atomic<pthread_t> m_owner{};
};

/// A mutex that refuses callers once too many of them are queued. Does nothing while no thread is active.
class FOKRAZO_API MaxWaitMutex : public Mutex {
 public:
  /// Lets `maxWaiters` callers queue; 0 means no limit.
  explicit MaxWaitMutex(int maxWaiters);

  /// As Mutex. @throws TryAgainException (EAGAIN) too many callers wait already. A holder is never refused.
  void lock() override FOKRAZO_ACQUIRE();
  bool tryLock() override FOKRAZO_TRY_ACQUIRE(true);

 private:
  class Waiter;

  int m_maxWaiters;
  Mutex m_waitersProtect;
  int m_waiters FOKRAZO_GUARDED_BY(m_waitersProtect) = 0;  // callers now in lock or tryLock
};

/// Holds a mutex from here to the end of the scope, with the thread's cancellation kept off meanwhile.
/// Does nothing at all in a process with no Thread object. Belongs to one thread.
class FOKRAZO_SCOPED_CAPABILITY FOKRAZO_API Lock {
 public:
  /// Takes `mutex`, which must outlive the guard. A cancel that is pending stays so until unLock.
  explicit Lock(Mutex& mutex) FOKRAZO_ACQUIRE(mutex) : Lock(mutex, Thread::locksCount()) {}
  /// Takes `mutex` by polling at that interval (0 and 0: 10 ms), without end.
  Lock(Mutex& mutex, long seconds, long nanoseconds) FOKRAZO_ACQUIRE(mutex);
  /// unLock. While an exception unwinds the stack, a pending cancel is left to the next cancellation point.
  /// A cancelled thread unwinds from here. NOLINTNEXTLINE(bugprone-exception-escape)
  ~Lock() noexcept(false) FOKRAZO_RELEASE() {
    if (isLocked()) unLock();
  }

  /// Takes the mutex again after unLock; no effect on a guard that holds it.
  void doLock() FOKRAZO_ACQUIRE();
  /// Gives the mutex back; a cancel that came meanwhile is acted on here. A second call has no effect.
  void unLock() FOKRAZO_RELEASE();
  /// Waits on the mutex's condition until the clock's current second plus `seconds`, at `nanoseconds` (below
  /// one second) into it. Mutex::wait tells the rest.
  bool wait(long seconds, long nanoseconds);
  /// Whether the guard holds the mutex.
  bool isLocked() const { return m_oldCancelState != kNotLocked; }

  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

 protected:
  /// The mutex that the guard is for.
  Mutex& mutex() const { return *m_mutex; }

 private:
  // Asked before a field is set, the question costs one comparison in all: the compiler then knows what the
  // destructor will find.
  Lock(Mutex& mutex, bool locksCount) FOKRAZO_ACQUIRE(mutex) : m_mutex(&mutex) {
    if (__builtin_expect(locksCount, false)) doLock();
  }

  static constexpr int kNotLocked = -1;

  Mutex* m_mutex;
  int m_oldCancelState = kNotLocked;  // to put back in unLock
};

/// A Lock over a mutex that is made on first demand, through a slot that the caller owns and never frees.
class FOKRAZO_SCOPED_CAPABILITY FOKRAZO_API AllocatingLock : public Lock {
 public:
  /// Requires: no two threads race for one empty slot.
  explicit AllocatingLock(Mutex** slot) FOKRAZO_ACQUIRE(*slot) : Lock(*allocateMutex(slot)) {}
  ~AllocatingLock() noexcept(false) FOKRAZO_RELEASE() = default;
  /// The slot's mutex, made if the slot is null.
  static Mutex* allocateMutex(Mutex** slot);
};

}  // namespace vesk
