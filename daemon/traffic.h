/// A hook for requests and replies in transit.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <utility>

#include "daemon/connection.h"
#include "daemon/status.h"

namespace brondalt {

/// Passes everything on. A daemon for tests overrides it to misbehave.
class Traffic {
 public:
  enum class Verdict {
    CarryOut,
    Refuse,   ///< reply "not authorized"
    Ignore,   ///< never reply, and leave the connection open
    Close,    ///< close the connection
    Restart,  ///< close all connections and listen on a new socket; if that fails, close this one
  };
  struct Admission {
    Verdict verdict = Verdict::CarryOut;
    int mark = 0;  ///< passed to deliver() with the reply
    /// The least time from the arrival of the request to its reply.
    std::chrono::milliseconds delay{0};
    /// The reply of an operation, which is then not carried out: see Dispatcher::carryOut.
    std::optional<Status> answer{};
  };

  virtual ~Traffic() = default;
  /// Decides about a received request.
  virtual Admission admit() { return {}; }
  /// Answers the request of `connection` with one of its calls; `message` is the reply.
  virtual void deliver(Connection& connection, std::string_view message, int /*mark*/) {
    connection.send(frame(message));
  }
};

}  // namespace brondalt
