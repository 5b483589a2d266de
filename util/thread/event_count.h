/// Waiting for another thread's news, until a deadline of the monotonic clock. Internal.
#pragma once

#include <atomic>

#include "util/thread/deadline.h"

namespace vesk {

/// Threads look for what they want, and wait here if it is not there:
///
///   for (;;) {
///     const EventCount::Ticket ticket = released.ticket();
///     if (Session* session = take()) return session;
///     if (deadline.hasPassed()) return nullptr;
///     released.wait(ticket, deadline);
///   }
///
/// The thread that makes it available calls notifyOne afterwards; then no waiter misses it. There is no lock,
/// so a fork at any moment leaves the child a usable object. Thread-safety: any thread.
class EventCount {
 public:
  using Ticket = int;

  /// Taken before looking.
  Ticket ticket() const { return m_events.load(std::memory_order_seq_cst); }
  /// Waits until another thread has notified since the ticket was taken, or the deadline passes. May return
  /// for no reason.
  void wait(Ticket ticket, Deadline deadline);
  /// Wake one waiter, or all. Without any they cost two atomic instructions.
  void notifyOne() { notify(1); }
  void notifyAll();

 private:
  void notify(int waiters);

  std::atomic<int> m_events{0};
  std::atomic<int> m_waiters{0};
};

}  // namespace vesk
