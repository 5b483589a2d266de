/// The tool's exit status, and its own exceptions.
#pragma once

#include <stdexcept>
#include <string>

namespace cli {

enum ExitStatus : int {
  kFound = 0,     // found, true, done
  kRefused = 1,   // not found, false, refused
  kUsage = 2,     // the command line is wrong
  kNoDaemon = 3,  // the daemon cannot be reached
  kFailed = 4,    // any other failure
};

/// The command line is wrong.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Not found, or not allowed.
class RefusedError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The daemon cannot be reached or trusted.
class NoDaemonError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace cli
