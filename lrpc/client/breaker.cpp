#include "lrpc/client/breaker.h"

#include <algorithm>

namespace vesk {

namespace {

constexpr int64_t kFirstPause = 250'000'000;
constexpr int64_t kLongestPause = 15'000'000'000;

int64_t nanoseconds(Breaker::Clock::time_point time) {
  return std::chrono::nanoseconds(time.time_since_epoch()).count();
}

// Between three and five quarters of the time. The clock's last digits differ enough between processes.
int64_t varied(int64_t pause, int64_t moment) {
  constexpr uint64_t kSpread = 0x9E3779B97F4A7C15;  // 2^64 divided by the golden ratio
  const auto part = static_cast<int64_t>((static_cast<uint64_t>(moment) * kSpread) >> 54);  // 0 to 1023
  return pause - pause / 4 + pause / 2 * part / 1024;
}

}  // namespace

bool Breaker::isOpen(Clock::time_point now) const {
  const Ticket retryAt = m_retryAt.load(std::memory_order_relaxed);
  return retryAt != 0 && nanoseconds(now) < retryAt;
}

std::optional<Breaker::Ticket> Breaker::admit(Clock::time_point now) {
  Ticket retryAt = m_retryAt.load(std::memory_order_relaxed);
  if (retryAt == 0) return retryAt;
  const int64_t moment = nanoseconds(now);
  if (moment < retryAt) return std::nullopt;
  const Ticket own = moment + m_pause.load(std::memory_order_relaxed);
  if (m_retryAt.compare_exchange_strong(retryAt, own, std::memory_order_relaxed)) return own;
  return std::nullopt;  // another thread tries
}

void Breaker::succeeded() {
  if (m_retryAt.load(std::memory_order_relaxed) == 0) return;
  m_pause.store(0, std::memory_order_relaxed);
  m_retryAt.store(0, std::memory_order_relaxed);
}

void Breaker::failed(Ticket ticket, Clock::time_point now) {
  if (ticket == kUncounted) return;
  const int64_t moment = nanoseconds(now);
  const int64_t pause = std::clamp(2 * m_pause.load(std::memory_order_relaxed), kFirstPause, kLongestPause);
  if (m_retryAt.compare_exchange_strong(ticket, moment + varied(pause, moment), std::memory_order_relaxed))
    m_pause.store(pause, std::memory_order_relaxed);
}

}  // namespace vesk
