/// Strings that are wiped from memory.
#pragma once

#include <cstring>
#include <string>

namespace vesk {

/// A string for secrets: its destructor overwrites its whole buffer, and so also a longer earlier text.
/// Copies, text moved out by std::string's own operations, and buffers released while it grew are not wiped:
/// create it at its full length and pass it by reference.
/// Thread-safety: as std::string.
class Shredder : public std::string {
 public:
  Shredder() = default;
  /// A copy; the caller wipes the original.
  Shredder(const std::string& text) : std::string(text) {}
  /// A move copies, so that each object wipes its own text.
  Shredder(const Shredder&) = default;
  Shredder& operator=(const Shredder&) = default;
  ~Shredder() {
    resize(capacity());              // a longer text may have been here before
    explicit_bzero(data(), size());  // unlike memset, never optimized away
    clear();
  }
};

}  // namespace vesk
