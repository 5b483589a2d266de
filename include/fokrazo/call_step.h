/// How far a call to the daemon got.
#pragma once

#include <fokrazo/export.h>

namespace vesk {

/// The steps of a call, in their order.
enum class CallStep : int {
  NotStarted,         ///< the daemon failed a moment ago and was not asked; or no object can have the key
  WaitingForSession,  ///< all sessions were in use
  Connecting,
  Authenticating,  ///< the daemon checks this process
  Sending,
  Receiving,  ///< the daemon has the whole request, and may have carried it out
  Reading,    ///< the reply has come
};

/// What happened in that step, such as "sending the request". Constant storage. Thread-safe.
FOKRAZO_API const char* textOf(CallStep step) noexcept;

}  // namespace vesk
