/// Whether it is worth asking the daemon. Internal.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>

namespace vesk {

/// Closed while the daemon works. A failure opens it for a short time, in which no call is admitted; then one
/// call may try, and if it fails, the next time is twice as long. The times are a quarter of a second to 15
/// seconds, each varied by a quarter so that many processes do not come back together. Thread-safety: any
/// thread. There is no lock: a fork leaves the child a usable object.
class Breaker {
 public:
  /// What a call was admitted with.
  using Ticket = int64_t;
  /// The ticket of a call that asks in any case; its failure changes nothing.
  static constexpr Ticket kUncounted = -1;

  /// A ticket, if a call may try now.
  std::optional<Ticket> admit();
  /// Whether a call would be refused at this moment.
  bool isOpen() const;
  /// What became of an admitted call. Of the calls that fail together only the first counts.
  void succeeded();
  void failed(Ticket ticket);

 private:
  std::atomic<Ticket> m_retryAt{0};  // nanoseconds of the monotonic clock; 0 while it is closed
  std::atomic<int64_t> m_pause{0};   // the last time that was chosen
};

}  // namespace vesk
