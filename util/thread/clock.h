/// Wall-clock time in whole seconds. Internal. Tests change it instead of waiting.
#pragma once

#include <atomic>
#include <ctime>
#include <limits>

namespace vesk {
namespace dayclock {

/// Added to the system's clock, in seconds; 0 except in tests.
extern std::atomic<long> offset;

/// Seconds since the epoch. Thread-safe.
inline time_t now() {
  return ::time(nullptr) + offset.load(std::memory_order_relaxed);
}

/// The time that many seconds from now; does not wrap around.
inline time_t in(long seconds) {
  time_t then;
  return __builtin_add_overflow(now(), seconds, &then) ? std::numeric_limits<time_t>::max() : then;
}

}  // namespace dayclock
}  // namespace vesk
