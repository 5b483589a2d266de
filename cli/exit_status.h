/// The tool's exit status.
#pragma once

#include <algorithm>

namespace cli {

enum ExitStatus : int {
  kFound = 0,     // found, true, done
  kRefused = 1,   // the daemon says that there is no such thing, or no
  kUsage = 2,     // the command line is wrong
  kNoDaemon = 3,  // the daemon cannot be reached, does not answer in time, or is not trusted
  kFailed = 4,    // any other failure
};

/// The status of a run in which several things were asked for: the worst.
inline ExitStatus worse(ExitStatus one, ExitStatus other) {
  return std::max(one, other);
}

}  // namespace cli
