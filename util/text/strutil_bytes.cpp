// Printable forms, hexadecimal digits and bytes.
#include <algorithm>

#include <fokrazo/ascii.h>
#include <fokrazo/strutil.h>
#include "util/text/hex_digits.h"

namespace {

uint8_t digitAt(const std::string& hex, size_t index) {
  return index < hex.size() ? HexToUint8(hex[index]) : 0;
}

// The letter that represents a control character after a backslash; 0 if none.
char controlLetter(unsigned char c) {
  switch (c) {
    case '\n':
      return 'n';
    case '\t':
      return 't';
    case '\f':
      return 'f';
    case '\r':
      return 'r';
    default:
      return 0;
  }
}

void appendEscaped(std::string& out, unsigned char c) {
  if (c == '$' || c == '\\') {
    out += '\\';
    out += static_cast<char>(c);
  } else if (char letter = controlLetter(c)) {
    out += '\\';
    out += letter;
  } else if (!vesk::isAsciiPrintable(static_cast<char>(c))) {
    out += "\\0x";
    out += itoa(c, 16);
  } else {
    out += static_cast<char>(c);
  }
}

void appendEscapedBlanks(std::string& out, size_t count) {
  while (count-- > 0) out += "\\ ";
}

}  // namespace

bool isprintable(const std::string& text) {
  return std::all_of(text.begin(), text.end(), vesk::isAsciiPrintable);
}

std::string tohex(const std::string& bytes) {
  std::string hex(2 * bytes.size(), '\0');
  char* out = hex.data();
  for (unsigned char byte : bytes) out = vesk::putHex(out, byte);
  return hex;
}

std::string printable(const std::string& text) {
  return isprintable(text) ? text : tohex(text);
}

std::string EscapeSpecialChars(const std::string& text) {
  std::string out;
  size_t first = std::min(text.find_first_not_of(' '), text.size());
  size_t end = std::max(text.find_last_not_of(' ') + 1, first);
  appendEscapedBlanks(out, first);
  for (size_t i = first; i < end; ++i) appendEscaped(out, text[i]);
  appendEscapedBlanks(out, text.size() - end);
  return out;
}

uint8_t HexToUint8(char digit) {
  if (digit >= '0' && digit <= '9') return static_cast<uint8_t>(digit - '0');
  if (digit >= 'a' && digit <= 'f') return static_cast<uint8_t>(digit - 'a' + 10);
  if (digit >= 'A' && digit <= 'F') return static_cast<uint8_t>(digit - 'A' + 10);
  return 0;
}

uint64_t Uint8ArrayToUint64(const unsigned char* bytes, int n) {
  uint64_t value = 0;
  for (int i = std::min(n, 8); i-- > 0;) value = value << 8 | bytes[i];
  return value;
}

void HexToUint8Array(const std::string& hex, unsigned char* out, unsigned int n, bool fromEnd) {
  for (size_t i = 0; i < n; ++i) {
    // Before the first digit the index wraps around past the last one.
    size_t high = fromEnd ? hex.size() - 2 * i - 2 : 2 * i;
    out[i] = static_cast<unsigned char>(digitAt(hex, high) << 4 | digitAt(hex, high + 1));
  }
}

std::string Uint8ArrayToHex(const unsigned char* bytes, int n, bool fromEnd) {
  std::string hex(n > 0 ? 2 * static_cast<size_t>(n) : 0, '\0');
  char* out = hex.data();
  for (int i = 0; i < n; ++i) out = vesk::putHex(out, bytes[fromEnd ? n - 1 - i : i], vesk::kUpperDigits);
  return hex;
}

std::string HexToHexEscaped(const std::string& hex) {
  std::string escaped;
  escaped.reserve(hex.size() / 2 * 3 + 2);
  for (size_t i = 0; i < hex.size(); ++i) {
    if (i % 2 == 0) escaped += '\\';
    escaped += hex[i];
  }
  return escaped;
}
