/// What all calls of a client share. Internal.
#pragma once

#include <atomic>

#include <fokrazo/client_options.h>
#include "lrpc/client/breaker.h"
#include "lrpc/client/reply_cache.h"
#include "lrpc/client/session_pool.h"
#include "util/thread/deadline.h"

namespace vesk {

/// Thread-safety: any thread.
class ClientCore {
 public:
  explicit ClientCore(const ClientOptions& chosen) : options(chosen), pool(options), cache(options.cache) {}

  /// Closes idle connections, now and then.
  void sweep();

  /// For a call that begins now.
  Deadline deadlineOf(const CallOptions& call) const {
    return Deadline::in(call.deadline.value_or(options.deadline));
  }

  const ClientOptions options;
  SessionPool pool;
  Breaker breaker;
  ReplyCache cache;

 private:
  std::atomic<Deadline::Clock::time_point> m_nextSweep{Deadline::Clock::time_point()};
};

}  // namespace vesk
