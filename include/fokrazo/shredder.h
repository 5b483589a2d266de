/// Text that is wiped from memory.
#pragma once

#include <cstring>
#include <string>

namespace vesk {

/// A string for secrets: its destructor overwrites the text, and also what a longer earlier text left after
/// it. Only the object's own memory is wiped. Copies, text moved out by string's own operations, and memory
/// released while it grew are not: make it at its full length, and pass it by reference.
/// Thread-safety: as string.
class Shredder : public std::string {
 public:
  Shredder() = default;
  /// A copy; the caller wipes the original.
  Shredder(const std::string& text) : std::string(text) {}
  /// A move copies, so that each object wipes its own text.
  Shredder(const Shredder&) = default;
  Shredder& operator=(const Shredder&) = default;
  ~Shredder() {
    resize(capacity());              // a longer text may have stood here before
    explicit_bzero(data(), size());  // unlike memset, it stays although nothing reads the bytes again
    clear();
  }
};

}  // namespace vesk
