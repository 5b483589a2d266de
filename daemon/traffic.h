/// What happens to requests and replies on their way.
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
    Restart,  ///< close all connections and listen anew; if that fails, close this one
  };
  struct Admission {
    Verdict verdict = Verdict::CarryOut;
    int mark = 0;  ///< handed to deliver() with the reply
  };

  virtual ~Traffic() = default;
  /// Decides about a request that has come in.
  virtual Admission admit() { return {}; }
  /// Ends the request of `connection` with one of its calls; `message` is the reply.
  virtual void deliver(Connection& connection, std::string_view message, int /*mark*/) {
    connection.send(frame(message));
  }
};

}  // namespace brondalt
