/// The memory that callers of name-service functions provide for an entry's strings.
#pragma once

#include <cerrno>
#include <cstring>
#include <list>
#include <memory>
#include <string>

#include "../entry_point.h"

namespace example {

/// Allocates from the buffer. If it is too small, throws the Failure that makes the caller retry with a
/// larger one: "try again" with ERANGE.
class CallerBuffer {
 public:
  CallerBuffer(char* buffer, size_t size) : m_next(buffer), m_left(size) {}

  /// Copies a text, with its terminator.
  char* text(const std::string& text) {
    return static_cast<char*>(memcpy(take(text.size() + 1, 1), text.c_str(), text.size() + 1));
  }

  /// Copies all texts into an array that ends with null.
  char** texts(const std::list<std::string>& texts) {
    auto** const array = static_cast<char**>(take((texts.size() + 1) * sizeof(char*), alignof(char*)));
    char** next = array;
    for (const std::string& one : texts) *next++ = text(one);
    *next = nullptr;
    return array;
  }

 private:
  void* take(size_t size, size_t alignment) {
    void* place = m_next;
    if (!std::align(alignment, size, place, m_left)) {
      vesk::Answer tooSmall = vesk::answerOf(vesk::VR_TRY_AGAIN);
      tooSmall.error = ERANGE;
      throw Failure{tooSmall};
    }
    m_next = static_cast<char*>(place) + size;
    m_left -= size;
    return place;
  }

  char* m_next;
  size_t m_left;
};

}  // namespace example
