/// Writing bytes in hexadecimal. Internal.
#pragma once

namespace vesk {

constexpr char kLowerDigits[] = "0123456789abcdef";
constexpr char kUpperDigits[] = "0123456789ABCDEF";

/// Writes the two digits of a byte and returns the position after them.
inline char* putHex(char* out, unsigned char byte, const char* digits = kLowerDigits) {
  *out++ = digits[byte >> 4];
  *out++ = digits[byte & 0xf];
  return out;
}

/// As putHex, with a leading backslash: three characters.
inline char* putEscapedHex(char* out, unsigned char byte, const char* digits = kLowerDigits) {
  *out++ = '\\';
  return putHex(out, byte, digits);
}

}  // namespace vesk
