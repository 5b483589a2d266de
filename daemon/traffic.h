/// A hook for requests and replies in transit.
#pragma once

#include <string>
#include <utility>

#include "daemon/connection.h"

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
