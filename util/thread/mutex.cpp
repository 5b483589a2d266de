#include <fokrazo/mutex.h>

#include <syslog.h>

#include <cerrno>
#include <exception>
#include <utility>

#include "util/error/throw.h"
#include "util/thread/clock.h"
#include "util/thread/mutex_internal.h"
#include "util/thread/thread_internal.h"

// The thread sanitizer does not know pthread_mutex_clocklock.
#if defined(__has_feature)
#define FOKRAZO_HAVE_TSAN __has_feature(thread_sanitizer)
#endif
#if defined(__GLIBC_PREREQ) && !FOKRAZO_HAVE_TSAN
#define FOKRAZO_HAVE_CLOCKLOCK __GLIBC_PREREQ(2, 30)
#endif

namespace {

constexpr char kSource[] = "util/mutex";
constexpr long kDefaultPoll = 10'000'000;  // nanoseconds

// For the few calls that must not throw.
void report(int error, int line) {
  if (error != 0) syslog(LOG_WARNING, "%s:%d OS system call returned: %d", kSource, line, error);
}

// Converts a deadline to the system's clock, which dayclock may differ from in tests.
timespec onSystemClock(const timespec& deadline) {
  return {deadline.tv_sec - vesk::dayclock::offset.load(std::memory_order_relaxed), deadline.tv_nsec};
}

bool sleepUntil(const timespec* deadline) {
  if (!deadline) {
    const timespec second{1, 0};
    nanosleep(&second, nullptr);
    return true;
  }
  const timespec end = onSystemClock(*deadline);
  while (clock_nanosleep(CLOCK_REALTIME, TIMER_ABSTIME, &end, nullptr) == EINTR) {
  }
  return false;
}

#if FOKRAZO_HAVE_CLOCKLOCK
int lockByClock(pthread_mutex_t& mutex, const timespec& deadline) {
  return pthread_mutex_clocklock(&mutex, CLOCK_MONOTONIC, &deadline);
}
#else
int lockByClock(pthread_mutex_t& mutex, const timespec& deadline) {
  const timespec interval{0, kDefaultPoll / 100};
  for (;;) {
    const int error = pthread_mutex_trylock(&mutex);
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    const bool over =
        now.tv_sec != deadline.tv_sec ? now.tv_sec > deadline.tv_sec : now.tv_nsec >= deadline.tv_nsec;
    if (error != EBUSY || over) return error;
    nanosleep(&interval, nullptr);
  }
}
#endif

// A condition wait unlocks a recursive mutex only once; this releases and restores the other locks.
class OtherHolds {
 public:
  OtherHolds(pthread_mutex_t& mutex, unsigned int depth) : m_mutex(mutex), m_count(depth - 1) {
    for (unsigned int i = 0; i < m_count; ++i) pthread_mutex_unlock(&m_mutex);
  }
  ~OtherHolds() {
    for (unsigned int i = 0; i < m_count; ++i) pthread_mutex_lock(&m_mutex);
  }
  OtherHolds(const OtherHolds&) = delete;
  OtherHolds& operator=(const OtherHolds&) = delete;

 private:
  pthread_mutex_t& m_mutex;
  unsigned int m_count;
};

}  // namespace

namespace vesk {

Mutex::Mutex() {
  if (!threadsSupported()) return;
  pthread_mutexattr_t recursive;
  report(pthread_mutexattr_init(&recursive), __LINE__);
  report(pthread_mutexattr_settype(&recursive, PTHREAD_MUTEX_RECURSIVE), __LINE__);
  report(pthread_mutex_init(&m_mutex, &recursive), __LINE__);
  report(pthread_mutexattr_destroy(&recursive), __LINE__);
  report(pthread_cond_init(&m_condition, nullptr), __LINE__);
}

Mutex::~Mutex() {
  if (!threadsSupported()) return;
  report(pthread_mutex_destroy(&m_mutex), __LINE__);
  report(pthread_cond_destroy(&m_condition), __LINE__);
}

void Mutex::lock() {
  if (!Thread::m_threadsSupported) return;
  FOKRAZO_CHECK_CALL(pthread_mutex_lock(&m_mutex));
  taken();
}

bool Mutex::tryLock() {
  if (!Thread::m_threadsSupported) return true;
  const int error = pthread_mutex_trylock(&m_mutex);
  if (error == EBUSY) return false;
  FOKRAZO_CHECK_CALL(error);
  taken();
  return true;
}

void Mutex::taken() {
  ++m_lockDepth;
  m_owner.store(pthread_self(), std::memory_order_relaxed);
}

void Mutex::unLock() {
  if (!Thread::m_threadsSupported) return;
  // After a failed wait the depth is 0 although the mutex is locked.
  if (m_lockDepth > 0 && --m_lockDepth == 0) m_owner.store({}, std::memory_order_relaxed);
  FOKRAZO_CHECK_CALL(pthread_mutex_unlock(&m_mutex));
}

bool lockUntil(Mutex& mutex, const timespec& deadline) {
  if (!Thread::m_threadsSupported) return true;
  int error = pthread_mutex_trylock(&mutex.m_mutex);
  if (error == EBUSY) error = lockByClock(mutex.m_mutex, deadline);
  if (error != 0) return false;
  mutex.taken();
  return true;
}

bool Mutex::isOwner() const {
  const pthread_t holder = owner();
  return holder != pthread_t{} && pthread_equal(holder, pthread_self());
}

bool Mutex::wait(const timespec* deadline) {
  if (!isOwner()) return sleepUntil(deadline);
  const unsigned int depth = m_lockDepth;
  const pthread_t holder = owner();
  m_lockDepth = 0;
  m_owner.store({}, std::memory_order_relaxed);
  bool woken = true;
  {
    const OtherHolds givenUp(m_mutex, depth);
    int error;
    if (deadline) {
      const timespec end = onSystemClock(*deadline);
      error = pthread_cond_timedwait(&m_condition, &m_mutex, &end);
      woken = error != ETIMEDOUT;
    } else {
      error = pthread_cond_wait(&m_condition, &m_mutex);
    }
    if (woken) FOKRAZO_CHECK_CALL(error);
  }
  m_lockDepth = depth;
  m_owner.store(holder, std::memory_order_relaxed);
  return woken;
}

void Mutex::signalOne() {
  if (Thread::locksCount()) FOKRAZO_CHECK_CALL(pthread_cond_signal(&m_condition));
}

void Mutex::signalAll() {
  if (Thread::locksCount()) FOKRAZO_CHECK_CALL(pthread_cond_broadcast(&m_condition));
}

/// Counts one caller among the waiters.
class MaxWaitMutex::Waiter {
 public:
  explicit Waiter(MaxWaitMutex& mutex) : m_mutex(mutex) {
    if (!enter())
      FOKRAZO_THROW(TryAgainException, "vesk::TryAgainException", EAGAIN,
                    "too many clients waiting for mutex (configure more threads?)");
  }
  // It was locked before, so locking does not fail. NOLINTNEXTLINE(bugprone-exception-escape)
  ~Waiter() {
    const BriefHold hold(m_mutex.m_waitersProtect);
    --m_mutex.m_waiters;
  }
  Waiter(const Waiter&) = delete;
  Waiter& operator=(const Waiter&) = delete;

 private:
  // Does not throw, because a throw may log, and no lock may be held then.
  bool enter() {
    const BriefHold hold(m_mutex.m_waitersProtect);
    if (m_mutex.m_waiters >= m_mutex.m_maxWaiters) return false;
    ++m_mutex.m_waiters;
    return true;
  }

  MaxWaitMutex& m_mutex;
};

MaxWaitMutex::MaxWaitMutex(int maxWaiters) : m_maxWaiters(maxWaiters) {}

void MaxWaitMutex::lock() {
  if (!Thread::locksCount()) return;
  if (m_maxWaiters == 0 || isOwner()) return Mutex::lock();
  const Waiter waiter(*this);
  Mutex::lock();
}

void MaxWaitMutex::unLock() FOKRAZO_NO_THREAD_SAFETY_ANALYSIS {  // may not be held
  if (isOwner()) Mutex::unLock();
}

bool MaxWaitMutex::tryLock() {
  if (!Thread::locksCount()) return true;
  if (m_maxWaiters == 0 || isOwner()) return Mutex::tryLock();
  const Waiter waiter(*this);
  return Mutex::tryLock();
}

namespace {

// Disables cancellation while a mutex is being taken, and restores it on failure.
class CancelOff {
 public:
  CancelOff() { FOKRAZO_CHECK_CALL(pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_oldState)); }
  ~CancelOff() {
    if (!m_kept) pthread_setcancelstate(m_oldState, nullptr);
  }
  /// Leaves cancellation disabled. Returns the state to restore later.
  int keep() {
    m_kept = true;
    return m_oldState;
  }
  CancelOff(const CancelOff&) = delete;
  CancelOff& operator=(const CancelOff&) = delete;

 private:
  int m_oldState = PTHREAD_CANCEL_ENABLE;
  bool m_kept = false;
};

}  // namespace

Lock::Lock(Mutex& mutex, long seconds, long nanoseconds) : m_mutex(&mutex) {
  if (!Thread::locksCount()) return;
  const timespec interval{seconds, seconds == 0 && nanoseconds == 0 ? kDefaultPoll : nanoseconds};
  CancelOff cancelOff;
  while (!m_mutex->tryLock())
    if (nanosleep(&interval, nullptr) != 0 && errno != EINTR) FOKRAZO_CHECK_CALL(errno);
  m_oldCancelState = cancelOff.keep();
}

void Lock::doLock() {
  if (!Thread::locksCount() || isLocked()) return;
  CancelOff cancelOff;
  m_mutex->lock();
  m_oldCancelState = cancelOff.keep();
}

void Lock::unLock() {
  if (!isLocked()) return;
  const int oldCancelState = std::exchange(m_oldCancelState, kNotLocked);
  m_mutex->unLock();
  if (oldCancelState != PTHREAD_CANCEL_ENABLE) return;
  FOKRAZO_CHECK_CALL(pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, nullptr));
  // A cancellation while an exception unwinds the stack would end the process.
  if (std::uncaught_exceptions() == 0) pthread_testcancel();
}

bool Lock::wait(long seconds, long nanoseconds) {
  const timespec deadline{dayclock::in(seconds), nanoseconds};
  return m_mutex->wait(&deadline);
}

Mutex* AllocatingLock::allocateMutex(Mutex** slot) {
  if (!*slot) *slot = new Mutex;
  return *slot;
}

}  // namespace vesk
