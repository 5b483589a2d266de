/// Ending calls of a client from another thread.
#pragma once

#include <atomic>

namespace vesk {

/// Hand it to any number of calls (CallOptions::cancellation); cancel() makes all of them, and all later
/// ones, return "cancelled" within 20 ms. It must outlive the calls. Thread-safety: any thread; cancel() also
/// from a signal handler.
class Cancellation {
 public:
  /// Ends the calls that use it, now and later. There is no way back.
  void cancel() noexcept { m_cancelled.store(true, std::memory_order_relaxed); }
  /// Whether cancel has been called.
  bool isCancelled() const noexcept { return m_cancelled.load(std::memory_order_relaxed); }

 private:
  std::atomic<bool> m_cancelled{false};
};

}  // namespace vesk
