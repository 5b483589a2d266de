/// The day's clock in whole seconds, as the library sees it. Internal: tests move it, so that no test has to
/// wait for real seconds.
#pragma once

#include <atomic>
#include <ctime>

namespace vesk {
namespace dayclock {

/// Seconds by which the library's day is ahead of the system's; 0 but in tests.
extern std::atomic<long> offset;

/// Seconds since the epoch. Thread-safe.
inline time_t now() {
  return ::time(nullptr) + offset.load(std::memory_order_relaxed);
}

}  // namespace dayclock
}  // namespace vesk
