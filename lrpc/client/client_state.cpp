#include "lrpc/client/client_state.h"

#include <atomic>

namespace vesk {

namespace {

std::atomic<unsigned long> gLostForks{0};

void noteFork(bool intact) {
  if (!intact) gLostForks.fetch_add(1, std::memory_order_relaxed);
}

}  // namespace

void watchLostForks() {
  inForkedChild(ForkOrder::Clients, noteFork);
}

unsigned long lostForks() {
  return gLostForks.load(std::memory_order_relaxed);
}

}  // namespace vesk
