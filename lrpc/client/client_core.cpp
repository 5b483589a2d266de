#include "lrpc/client/client_core.h"

namespace vesk {

void ClientCore::sweep() {
  const Deadline::Clock::time_point now = Deadline::Clock::now();
  if (now < m_nextSweep.load(std::memory_order_relaxed)) return;
  m_nextSweep.store(Deadline::in(options.idle / 4).moment(), std::memory_order_relaxed);
  pool.closeIdle(options.idle);
}

}  // namespace vesk
