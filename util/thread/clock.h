/// The day's clock in whole seconds, as the library sees it. Internal: tests move it, so that no test has to
/// wait for real seconds.
#pragma once

#include <atomic>
#include <ctime>
#include <limits>

namespace vesk {
namespace dayclock {

/// Seconds by which the library's day is ahead of the system's; 0 but in tests.
extern std::atomic<long> offset;

/// Seconds since the epoch. Thread-safe.
inline time_t now() {
  return ::time(nullptr) + offset.load(std::memory_order_relaxed);
}

/// The time that many seconds from now, kept from wrapping into the past.
inline time_t in(long seconds) {
  time_t then;
  return __builtin_add_overflow(now(), seconds, &then) ? std::numeric_limits<time_t>::max() : then;
}

}  // namespace dayclock
}  // namespace vesk
