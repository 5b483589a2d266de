/// The text of a finished message, safe to write. Internal.
///
/// Messages quote what comes from outside: user names, answers of the daemon, arguments. None of it may end a
/// line, forge one, or control the terminal on which the log is read. So each sink passes every finished
/// message through here.
#pragma once

#include <cstdarg>
#include <cstddef>

#include "util/text/hex_digits.h"

namespace vesk {

/// How many bytes at the start of the text can be written as they are. Escaped are: control characters but
/// the tab (0x7F stays, as a dump of bytes shows it), bytes that are not UTF-8, and characters that control a
/// terminal (U+0080 to U+009F), separate lines (U+2028, U+2029) or change the direction of writing.
size_t plainLength(const char* text, size_t length);

/// Writes the four characters that stand for one byte: \x1b.
constexpr size_t kEscapedLength = 4;
inline void writeEscaped(char* to, char byte) {
  to[0] = '\\';
  to[1] = 'x';
  putHex(to + 2, static_cast<unsigned char>(byte));
}

/// Calls `append(bytes, count)` with the parts of the escaped text.
template <class Append>
void appendEscaped(const char* text, size_t length, Append append) {
  while (length > 0) {
    const size_t plain = plainLength(text, length);
    if (plain > 0) append(text, plain);
    text += plain;
    length -= plain;
    if (length == 0) return;
    char escaped[kEscapedLength];
    writeEscaped(escaped, *text++);
    --length;
    append(escaped, kEscapedLength);
  }
}

/// Escapes the text in a buffer of `size` bytes. What no longer fits is cut. Returns the new length; a 0
/// follows.
size_t escapeInPlace(char* text, size_t length, size_t size);

/// vsnprintf, escaped. A newline at the end of `format` itself stays. Returns the length; a 0 follows.
size_t formatEscaped(char* text, size_t size, const char* format, va_list args)
    __attribute__((format(printf, 3, 0)));

}  // namespace vesk
