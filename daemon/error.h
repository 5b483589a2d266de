/// Failures of the daemon itself, as opposed to those of one request.
#pragma once

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

namespace brondalt {

/// what() is one human-readable line. The library's own exceptions are not converted.
class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Throws Error "what: text of errno".
[[noreturn]] inline void throwSystemError(const std::string& what) {
  // strerror's text is per thread. NOLINTNEXTLINE(concurrency-mt-unsafe)
  throw Error(what + ": " + strerror(errno));
}

}  // namespace brondalt
