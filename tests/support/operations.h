/// Every operation of a session, against a stand-in with the sample directory. Each has the same outcome
/// however often it is repeated, and whatever other clients do at the same time.
#pragma once

#include <string>
#include <vector>

namespace vesk {
class LocalRpcSession;
}

namespace testsupport {

/// What happens to an operation whose connection is lost.
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

/// Whether an outcome means that the exchange failed: here, on the way or in the daemon.
bool isFailure(const Operation& operation, const std::string& outcome);

}  // namespace testsupport
