/// Escaping of finished messages. Internal.
///
/// Messages quote untrusted text: user names, replies of the daemon, arguments. It must not end or forge a
/// line, or control the terminal on which the log is read. So every sink escapes each finished message with
/// these functions.
#pragma once

#include <cstdarg>
#include <cstddef>

#include "util/text/hex_digits.h"

namespace vesk {

/// The number of leading bytes that need no escape. Escaped are: control characters except tab and 0x7F
/// (which byte dumps contain), bytes that are not UTF-8, and characters that control a terminal (U+0080 to
/// U+009F), separate lines (U+2028, U+2029) or change the text direction.
size_t plainLength(const char* text, size_t length);

/// The escape of one byte: \x1b.
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

/// Escapes the text in a buffer of `size` bytes, cutting what does not fit. Returns the new length;
/// terminates with NUL.
size_t escapeInPlace(char* text, size_t length, size_t size);

/// vsnprintf, escaped. A final newline of `format` itself is kept. Returns the length; terminates with NUL.
size_t formatEscaped(char* text, size_t size, const char* format, va_list args)
    __attribute__((format(printf, 3, 0)));

}  // namespace vesk
