/// A user as the name service of this host knows it.
#pragma once

#include <string>

namespace cli {

struct HostAccount {
  enum Outcome {
    Found,
    NotFound,
    TooSlow,  // no answer within the time
    Failed,   // it cannot be asked
  };

  Outcome outcome = Failed;
  // Not escaped.
  std::string uid;
  std::string gid;
  std::string home;
  std::string shell;
};

/// Asks the host's name services, as every program of the host does, in a process of its own (getent(1)).
/// Waits about ten seconds at the most.
HostAccount hostAccountOf(const std::string& name);

}  // namespace cli
