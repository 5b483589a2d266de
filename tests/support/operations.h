/// Every operation of a session, as one asks it of a stand-in with the sample directory: over and over, by
/// any number of clients, with the same outcome, whatever the others ask.
#pragma once

#include <string>
#include <vector>

namespace vesk {
class LocalRpcSession;
}

namespace testsupport {

/// How an operation meets a connection that is lost.
enum class Sent {
  Again,    ///< it is sent once more, on a new one
  Once,     ///< it fails
  InParts,  ///< it is several exchanges that belong to one connection
};

struct Operation {
  const char* call;
  /// What it returns or throws and its out arguments, as one line (see tests/support/outcome_text.h).
  std::string (*make)(vesk::LocalRpcSession& session);
  const char* outcome;
  Sent sent = Sent::Again;
};

/// All but stop, which ends the daemon.
const std::vector<Operation>& operations();

/// Whether an outcome tells that the exchange failed, on this side, on the way or at the daemon.
bool isFailure(const Operation& operation, const std::string& outcome);

}  // namespace testsupport
