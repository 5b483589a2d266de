#include "util/sink/log_text.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iterator>

namespace vesk {
namespace {

// Well-formed UTF-8, without overlong forms and surrogates: the range of the byte after each lead byte, and
// the length.
struct Lead {
  uint8_t first, last;  // lead bytes
  uint8_t length;
  uint8_t secondFrom, secondTo;
};

constexpr Lead kLeads[] = {
    {0xC2, 0xDF, 2, 0x80, 0xBF},  //
    {0xE0, 0xE0, 3, 0xA0, 0xBF},  //
    {0xE1, 0xEC, 3, 0x80, 0xBF},  //
    {0xED, 0xED, 3, 0x80, 0x9F},  //
    {0xEE, 0xEF, 3, 0x80, 0xBF},  //
    {0xF0, 0xF0, 4, 0x90, 0xBF},  //
    {0xF1, 0xF3, 4, 0x80, 0xBF},  //
    {0xF4, 0xF4, 4, 0x80, 0x8F},  //
};

struct Range {
  uint32_t first, last;
};

// Terminal controls, direction marks and overrides, line separators.
constexpr Range kUnsafe[] = {
    {0x80, 0x9F}, {0x61C, 0x61C}, {0x200E, 0x200F}, {0x2028, 0x202E}, {0x2066, 0x2069}};

bool isUnsafe(uint32_t character) {
  return std::any_of(std::begin(kUnsafe), std::end(kUnsafe),
                     [&](const Range& range) { return character >= range.first && character <= range.last; });
}

// The length of the multi-byte character at the start of the text; 0 if it must be escaped.
size_t multibyteLength(const unsigned char* text, size_t length) {
  for (const Lead& lead : kLeads) {
    if (text[0] < lead.first || text[0] > lead.last) continue;
    if (length < lead.length || text[1] < lead.secondFrom || text[1] > lead.secondTo) return 0;
    uint32_t character = text[0] & (0x7FU >> lead.length);
    for (size_t i = 1; i < lead.length; ++i) {
      if ((text[i] & 0xC0) != 0x80) return 0;
      character = character << 6 | (text[i] & 0x3F);
    }
    return isUnsafe(character) ? 0 : lead.length;
  }
  return 0;
}

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
    const size_t count = multibyteLength(bytes + at, length - at);
    if (count == 0) break;
    at += count;
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
