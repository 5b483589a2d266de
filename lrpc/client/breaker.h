/// Whether it is worth asking the daemon. Internal.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <optional>

namespace vesk {

/// Closed while the daemon works. A failure opens it for a back-off time in which no call is admitted; then
/// one call may try, and if that fails, the next time is twice as long. The times are 0.25 to 15 seconds,
/// each varied by a quarter so that many processes do not come back together. Thread-safety: any thread.
/// There is no lock: a fork leaves the child a usable object.
class Breaker {
 public:
  using Clock = std::chrono::steady_clock;
  /// What a call was admitted with.
  using Ticket = int64_t;
  /// The ticket of a call that asks in any case; its failure changes nothing.
  static constexpr Ticket kUncounted = -1;

  /// A ticket, if a call may try at that time.
  std::optional<Ticket> admit(Clock::time_point now = Clock::now());
  bool isOpen(Clock::time_point now = Clock::now()) const;
  /// What became of an admitted call. Of calls that fail together only the first counts.
  void succeeded();
  void failed(Ticket ticket, Clock::time_point now = Clock::now());

 private:
  std::atomic<Ticket> m_retryAt{0};  // nanoseconds of the clock; 0 while closed
  std::atomic<int64_t> m_pause{0};   // the current back-off time
};

}  // namespace vesk
