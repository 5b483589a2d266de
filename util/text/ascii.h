/// ASCII-only character tests, so that keys and protocol strings do not depend on the program's locale. (In a
/// Turkish locale "I" and "i" are different letters.) Internal.
#pragma once

#include <algorithm>
#include <string_view>

#include <fokrazo/strutil.h>

namespace vesk {

constexpr char asciiUpper(char c) {
  return static_cast<char>('a' <= c && c <= 'z' ? c - ('a' - 'A') : c);
}
constexpr bool isAsciiSpace(char c) {
  return c == ' ' || ('\t' <= c && c <= '\r');
}
constexpr bool isAsciiDigit(char c) {
  return '0' <= c && c <= '9';
}
constexpr bool isAsciiControl(char c) {
  return ('\0' <= c && c < ' ') || c == '\x7f';
}
constexpr bool isAsciiPrintable(char c) {
  return ' ' <= c && c <= '~';
}

/// Whether the texts are equal, ignoring case.
inline bool equalIgnoringCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return asciiLower(x) == asciiLower(y); });
}
/// Whether the text begins with the prefix, ignoring case.
inline bool startsIgnoringCase(std::string_view text, std::string_view prefix) {
  return equalIgnoringCase(text.substr(0, prefix.size()), prefix);
}

}  // namespace vesk
