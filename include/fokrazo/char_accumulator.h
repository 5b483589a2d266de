/// A string of limited length on the stack, for building a message's printf format.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>

#include <fokrazo/export.h>

namespace vesk {

/// A pointer to the incomplete conversion at the end of a printf format; to its terminator if there is none.
FOKRAZO_API char* unfinishedConversion(char* format);

/// Collects at most Size - 1 characters; what does not fit is silently dropped.
/// Thread-safety: an object belongs to one thread.
template <unsigned Size>
class CharAccumulator {
 public:
  // cppcheck-suppress uninitMemberVar ; no byte is read before it is written
  CharAccumulator() : m_last(m_text + Size - 1), m_current(m_text) {}
  CharAccumulator(const CharAccumulator&) = delete;
  CharAccumulator& operator=(const CharAccumulator&) = delete;

  /// Appends a character of a format.
  void append(char c) {
    if (m_current < m_last) *m_current++ = c;
  }

  /// Appends part of a format.
  void append(const char* text) { appendBytes(text, strnlen(text, m_last - m_current)); }

  /// Appends text to be printed literally: each "%" is doubled.
  void appendPlain(const char* text) {
    for (const char* percent; (percent = strchr(text, '%')) != nullptr; text = percent + 1) {
      appendBytes(text, percent + 1 - text);
      append('%');
    }
    append(text);
  }

  /// Terminates the text and returns it. If it was cut inside a conversion, that conversion is removed, so
  /// that the rest still fits the same arguments.
  const char* terminate() {
    *m_current = '\0';
    if (m_current == m_last) *unfinishedConversion(m_text) = '\0';
    return m_text;
  }

 private:
  void appendBytes(const char* text, size_t length) {
    const size_t fitting = std::min<size_t>(length, m_last - m_current);
    memcpy(m_current, text, fitting);
    m_current += fitting;
  }

  char m_text[Size];
  char* m_last;  // the last usable byte, kept for the terminator
  char* m_current;
};

}  // namespace vesk
