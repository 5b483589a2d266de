#include "tests/support/wire.h"

#include <cctype>
#include <cstring>

namespace testsupport {

namespace {

std::string bigEndian(uint32_t value, int bytes) {
  std::string text;
  while (bytes-- > 0) text += static_cast<char>(value >> (8 * bytes));
  return text;
}

std::string shortestLength(size_t size) {
  if (size < 0x80) return bigEndian(size, 1);
  const int bytes = size < 0x100 ? 1 : size < 0x10000 ? 2 : size < 0x1000000 ? 3 : 4;
  return bigEndian(0x80 + bytes, 1) + bigEndian(size, bytes);
}

}  // namespace

std::string hex(const std::string& digits) {
  std::string bytes;
  int high = -1;
  for (const char c : digits) {
    if (c == ' ') continue;
    const int digit = isdigit(c) ? c - '0' : tolower(c) - 'a' + 10;
    if (high >= 0) bytes += static_cast<char>(high << 4 | digit);
    high = high >= 0 ? -1 : digit;
  }
  return bytes;
}

std::string word(uint32_t value) {
  char bytes[sizeof value];
  memcpy(bytes, &value, sizeof value);
  return std::string(bytes, sizeof bytes);
}

std::string integer(int32_t value) {
  int bytes = 1;
  while (bytes < 4 && (value < -(1L << (8 * bytes - 1)) || value >= 1L << (8 * bytes - 1))) ++bytes;
  return "\x02" + bigEndian(bytes, 1) + bigEndian(static_cast<uint32_t>(value), bytes);
}

std::string octets(const std::string& bytes) {
  return "\x04" + shortestLength(bytes.size()) + bytes;
}

std::string sequence(const std::string& content) {
  return "\x30\x84" + bigEndian(content.size(), 4) + content;
}

std::string object(const std::string& dn) {
  // A header of 32 bytes, the count and the index; then the record: "_dn" by its number, and one value.
  return octets(std::string(32, '\0') + word(1) + word(40) + word(0x800000a9) + word(1) + word(dn.size()) +
                dn);
}

std::string request(int opcode, const std::string& body) {
  return sequence(integer(opcode) + integer(0)) + body;
}

std::string reply(int result, const std::string& body) {
  return sequence(integer(49) + integer(result)) + body;
}

std::string status(int result, int code, int detail, const std::string& message) {
  return integer(result) + integer(code) + integer(detail) + octets(message) + integer(0) + integer(0) +
         integer(0) + octets("");
}

std::string answer(int result, const std::string& rest) {
  return reply(0, status(result) + rest);
}

std::string framed(const std::string& message) {
  return word(message.size()) + message;
}

}  // namespace testsupport
