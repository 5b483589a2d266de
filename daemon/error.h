/// Failures of the daemon itself, as opposed to those of one request.
#pragma once

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

namespace brondalt {

/// what() is one line for a person. Failures of the library keep the library's own classes.
class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Throws Error "what: text of errno".
[[noreturn]] inline void throwSystemError(const std::string& what) {
  // The text is the thread's own. NOLINTNEXTLINE(concurrency-mt-unsafe)
  throw Error(what + ": " + strerror(errno));
}

}  // namespace brondalt
