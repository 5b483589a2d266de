/// The system's threads interface. Internal. Uses only weak references, so that the library works in a
/// program without a threads library. Call these functions only after threadsSupported returned true, or in a
/// thread.
#pragma once

#include <pthread.h>

#include <ctime>

#include <fokrazo/mutex.h>
#include <fokrazo/thread.h>

#pragma weak pthread_attr_destroy
#pragma weak pthread_attr_init
#pragma weak pthread_attr_setschedpolicy
#pragma weak pthread_attr_setstacksize
#pragma weak pthread_cancel
#pragma weak pthread_cond_broadcast
#pragma weak pthread_cond_destroy
#pragma weak pthread_cond_init
#pragma weak pthread_cond_signal
#pragma weak pthread_cond_timedwait
#pragma weak pthread_cond_wait
#pragma weak pthread_create
#pragma weak pthread_detach
#pragma weak pthread_getschedparam
#pragma weak pthread_getspecific
#pragma weak pthread_join
#pragma weak pthread_key_create
#pragma weak pthread_key_delete
#pragma weak pthread_mutex_clocklock
#pragma weak pthread_mutex_destroy
#pragma weak pthread_mutex_init
#pragma weak pthread_mutex_lock
#pragma weak pthread_mutex_trylock
#pragma weak pthread_mutex_unlock
#pragma weak pthread_mutexattr_destroy
#pragma weak pthread_mutexattr_init
#pragma weak pthread_mutexattr_settype
#pragma weak pthread_once
#pragma weak pthread_setcancelstate
#pragma weak pthread_setschedparam
#pragma weak pthread_setspecific
#pragma weak pthread_testcancel

namespace vesk {

/// Whether the process has the interface.
inline bool threadsSupported() {
  if (!Thread::m_threadSupportKnown) Thread::DetermineThreadSupport();
  return Thread::m_threadsSupported;
}

/// The calling thread's number, from 1; never reused in the process.
unsigned long threadNumber();

/// Takes `mutex` like Mutex::lock, but returns false at `deadline` on the monotonic clock. Never throws.
bool lockUntil(Mutex& mutex, const timespec& deadline) FOKRAZO_TRY_ACQUIRE(true, mutex);

/// Throws SystemException "OS call failed: …" with `error` as its code.
[[noreturn]] void failOsCall(int error, const char* source, int line);
/// The same, unless `error` is 0.
inline void checkOsCall(int error, const char* source, int line) {
  if (error != 0) failOsCall(error, source, line);
}

/// Holds a mutex during a few instructions without a cancellation point. Unlike Lock it takes the mutex even
/// in a single-threaded process, and never acts on a cancellation.
class FOKRAZO_SCOPED_CAPABILITY BriefHold {
 public:
  explicit BriefHold(Mutex& mutex) FOKRAZO_ACQUIRE(mutex) : m_mutex(mutex) { m_mutex.lock(); }
  // Unlocking a held mutex does not fail. NOLINTNEXTLINE(bugprone-exception-escape)
  ~BriefHold() FOKRAZO_RELEASE() { m_mutex.unLock(); }
  BriefHold(const BriefHold&) = delete;
  BriefHold& operator=(const BriefHold&) = delete;

 private:
  Mutex& m_mutex;
};

/// Disables cancellation until the end of the scope. Needed because close is a cancellation point, and
/// destructors close files.
class CancelKeptOff {
 public:
  CancelKeptOff() {
    if (threadsSupported()) pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_oldState);
  }
  ~CancelKeptOff() {
    if (threadsSupported()) pthread_setcancelstate(m_oldState, nullptr);
  }
  CancelKeptOff(const CancelKeptOff&) = delete;
  CancelKeptOff& operator=(const CancelKeptOff&) = delete;

 private:
  int m_oldState = PTHREAD_CANCEL_ENABLE;
};

}  // namespace vesk

/// Checks a call that returns its error.
#define FOKRAZO_CHECK_OS_CALL(error) ::vesk::checkOsCall(error, kSource, __LINE__)
