/// What a session can ask of a stand-in with the sample directory, over and over with the same answer.
#pragma once

#include <string>
#include <vector>

namespace vesk {
class LocalRpcSession;
}

namespace testsupport {

struct Query {
  const char* name;
  /// The answer as one line (see tests/support/told.h). Throws what the session throws.
  std::string (*ask)(vesk::LocalRpcSession& session);
};

/// Lookups by every key, searches with and without pages, authentication, health and policy. None of them
/// needs the state of a connection, and none changes the directory.
const std::vector<Query>& queries();

}  // namespace testsupport
