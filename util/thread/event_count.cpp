#include "util/thread/event_count.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <climits>
#include <ctime>

namespace vesk {

namespace {

// The C library offers no wait for a change of a word.
void futex(std::atomic<int>& word, int operation, int value, const timespec* until) {
  syscall(SYS_futex, reinterpret_cast<int*>(&word), operation | FUTEX_PRIVATE_FLAG, value, until, nullptr,
          FUTEX_BITSET_MATCH_ANY);
}

timespec absolute(Deadline deadline) {
  const auto time = deadline.moment().time_since_epoch();
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
  return {static_cast<time_t>(seconds.count()), static_cast<long>((time - seconds).count())};
}

}  // namespace

static_assert(sizeof(std::atomic<int>) == sizeof(int), "the kernel reads a plain int");
static_assert(std::chrono::steady_clock::period::den == std::nano::den, "a timespec counts nanoseconds");

void EventCount::wait(Ticket ticket, Deadline deadline) {
  const timespec until = absolute(deadline);
  m_waiters.fetch_add(1, std::memory_order_seq_cst);
  futex(m_events, FUTEX_WAIT_BITSET, ticket, deadline.isNever() ? nullptr : &until);
  m_waiters.fetch_sub(1, std::memory_order_relaxed);
}

void EventCount::notifyAll() {
  notify(INT_MAX);
}

void EventCount::notify(int waiters) {
  m_events.fetch_add(1, std::memory_order_seq_cst);
  if (m_waiters.load(std::memory_order_seq_cst) > 0) futex(m_events, FUTEX_WAKE, waiters, nullptr);
}

}  // namespace vesk
