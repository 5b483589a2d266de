/// How the tool ends, and the ways in which a command gives up on its own account.
#pragma once

#include <stdexcept>
#include <string>

namespace cli {

enum ExitStatus : int {
  kFound = 0,     // found, true, done
  kRefused = 1,   // not found, false, refused
  kUsage = 2,     // the command line is wrong
  kNoDaemon = 3,  // the daemon cannot be reached
  kFailed = 4,    // anything else
};

/// The command line is wrong; what() says what is wrong with what.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// What was asked for is not there or not granted; what() says why.
class RefusedError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The daemon cannot be reached; what() says why.
class NoDaemonError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace cli
