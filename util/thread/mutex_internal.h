/// Ways to take a mutex that programs do not need. Internal.
#pragma once

#include <ctime>

#include <fokrazo/mutex.h>

namespace vesk {

/// Takes `mutex` like Mutex::lock, but returns false at `deadline` on the monotonic clock. Never throws.
bool lockUntil(Mutex& mutex, const timespec& deadline) FOKRAZO_TRY_ACQUIRE(true, mutex);

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

}  // namespace vesk
