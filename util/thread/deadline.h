/// The moment at which a wait ends. Internal.
#pragma once

#include <algorithm>
#include <chrono>
#include <climits>

namespace vesk {

/// A moment of the monotonic clock, which no change of the day's time moves. Thread-safety: a plain value.
class Deadline {
 public:
  using Clock = std::chrono::steady_clock;

  /// That long from now; a negative time is 0. A hundred years and more are taken for ever.
  static Deadline in(std::chrono::milliseconds time) {
    return time > kEver ? never() : Deadline(Clock::now() + std::max(time, time.zero()));
  }
  /// A moment that never comes.
  static Deadline never() { return Deadline(Clock::time_point::max()); }

  bool isNever() const { return m_moment == Clock::time_point::max(); }
  bool hasPassed() const { return !isNever() && Clock::now() >= m_moment; }
  Clock::time_point moment() const { return m_moment; }
  /// For poll: milliseconds until then, rounded up, at least 0; -1 for never.
  int pollTime() const {
    if (isNever()) return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_moment - Clock::now()).count();
    return static_cast<int>(std::clamp<decltype(left)>(left, 0, INT_MAX));
  }
  /// The earlier of the two.
  Deadline orEarlier(Deadline other) const { return Deadline(std::min(m_moment, other.m_moment)); }

 private:
  static constexpr std::chrono::milliseconds kEver = std::chrono::hours(24 * 365 * 100);

  explicit Deadline(Clock::time_point moment) : m_moment(moment) {}

  Clock::time_point m_moment;
};

}  // namespace vesk
