/// ASCII-only character tests and case, so that keys and protocol strings do not depend on the program's
/// locale. (In a Turkish locale "I" and "i" are different letters.) Pure functions.
#pragma once

#include <algorithm>
#include <string_view>

namespace vesk {

/// The character, in that case if it is an ASCII letter.
constexpr char asciiLower(char c) {
  return static_cast<char>('A' <= c && c <= 'Z' ? c + ('a' - 'A') : c);
}
constexpr char asciiUpper(char c) {
  return static_cast<char>('a' <= c && c <= 'z' ? c - ('a' - 'A') : c);
}
/// Whether the character is of that class. White space is blank, tab, newline, vertical tab, form feed and
/// carriage return.
constexpr bool isAsciiSpace(char c) {
  return c == ' ' || ('\t' <= c && c <= '\r');
}
constexpr bool isAsciiDigit(char c) {
  return '0' <= c && c <= '9';
}
constexpr bool isAsciiUpper(char c) {
  return 'A' <= c && c <= 'Z';
}
constexpr bool isAsciiLower(char c) {
  return 'a' <= c && c <= 'z';
}
constexpr bool isAsciiAlnum(char c) {
  return isAsciiDigit(c) || isAsciiLower(asciiLower(c));
}
constexpr bool isAsciiHexDigit(char c) {
  return isAsciiDigit(c) || ('a' <= asciiLower(c) && asciiLower(c) <= 'f');
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
