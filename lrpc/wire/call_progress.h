/// A client's call, as the layers below see it. Internal.
#pragma once

#include <fokrazo/call_step.h>
#include <fokrazo/cancellation.h>
#include "util/thread/deadline.h"

namespace vesk {

/// A call's deadline, cancellation and progress. Belongs to the calling thread.
struct CallProgress {
  /// Why a call ended early; the exception says only that it failed.
  enum class Stop { None, DeadlinePassed, Cancelled, UntrustedPeer, OwnProcess, ConnectionLost };

  Deadline deadline = Deadline::never();
  const Cancellation* cancellation = nullptr;
  bool isRepeatable = true;          ///< whether the request may be sent again after the daemon has had it
  bool needsNewConnection = false;   ///< one that was opened for this call
  bool needsSameConnection = false;  ///< on which the daemon keeps something for the caller
  bool refusesOwnProcess = false;    ///< whether this process must not be its own daemon

  CallStep step = CallStep::NotStarted;
  bool isAuthenticating = false;  ///< the exchange is that of authenticateProcess, not the call's own
  Stop stop = Stop::None;
  int error = 0;  ///< the errno of a connection that could not be made

  /// Notes a step of an exchange.
  void reach(CallStep exchangeStep) { step = isAuthenticating ? CallStep::Authenticating : exchangeStep; }

  /// Whether the deadline has passed or the call was cancelled; notes it.
  bool mustStop();
  /// Until when the caller may wait before it asks again whether it must stop. A cancellation is polled,
  /// because the program could close any descriptor that announced it.
  Deadline nextLook() const;
};

}  // namespace vesk
