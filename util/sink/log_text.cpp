#include "util/sink/log_text.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include <fokrazo/utf8.h>

namespace vesk {
namespace {

// Not inlined, so that a message without escapes needs no second buffer on the stack.
__attribute__((noinline)) size_t rebuild(char* text, size_t length, size_t size) {
  char copy[1024];
  length = std::min(length, sizeof copy);
  memcpy(copy, text, length);
  size_t end = 0;
  for (size_t at = 0; at < length;) {
    const size_t plain = std::min(plainLength(copy + at, length - at), size - 1 - end);
    memcpy(text + end, copy + at, plain);
    end += plain;
    at += plain;
    if (at == length || size - 1 - end < kEscapedLength) break;
    writeEscaped(text + end, copy[at++]);
    end += kEscapedLength;
  }
  text[end] = '\0';
  return end;
}

}  // namespace

size_t plainLength(const char* text, size_t length) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(text);
  size_t at = 0;
  while (at < length) {
    if (bytes[at] < 0x80) {
      if (bytes[at] < ' ' && bytes[at] != '\t') break;
      ++at;
      continue;
    }
    const Utf8Character character = utf8At({text, length}, at);
    if (character.length == 0 || isTerminalControl(character.code)) break;
    at += character.length;
  }
  return at;
}

size_t escapeInPlace(char* text, size_t length, size_t size) {
  return plainLength(text, length) == length ? length : rebuild(text, length, size);
}

size_t formatEscaped(char* text, size_t size, const char* format, va_list args) {
  const int wanted = vsnprintf(text, size, format, args);
  if (wanted < 0) {
    text[0] = '\0';
    return 0;
  }
  size_t length = std::min(static_cast<size_t>(wanted), size - 1);
  const size_t formatLength = strlen(format);
  const bool endsLine = length > 0 && text[length - 1] == '\n' && formatLength > 0 &&
                        format[formatLength - 1] == '\n' && static_cast<size_t>(wanted) == length;
  if (!endsLine) return escapeInPlace(text, length, size);
  length = escapeInPlace(text, length - 1, size - 1);
  text[length++] = '\n';
  text[length] = '\0';
  return length;
}

}  // namespace vesk
