#include "util/text/base64.h"

#include <cstdint>

namespace vesk {

namespace {

int valueOf(char c) {
  if (c >= 'A' && c <= 'Z') return c - 'A';
  if (c >= 'a' && c <= 'z') return c - 'a' + 26;
  if (c >= '0' && c <= '9') return c - '0' + 52;
  if (c == '+') return 62;
  if (c == '/') return 63;
  return -1;
}

}  // namespace

ssize_t decodeBase64(std::string_view text, unsigned char* out, size_t size) {
  if (text.size() % 4 != 0) return -1;
  for (int padding = 0; padding < 2 && !text.empty() && text.back() == '='; ++padding) text.remove_suffix(1);
  const size_t length = text.size() * 6 / 8;
  if (length > size) return -1;

  uint32_t bits = 0;
  unsigned int bitCount = 0;
  for (char c : text) {
    int value = valueOf(c);
    if (value < 0) return -1;
    bits = bits << 6 | static_cast<uint32_t>(value);
    bitCount += 6;
    if (bitCount < 8) continue;
    bitCount -= 8;
    *out++ = static_cast<unsigned char>(bits >> bitCount);
    bits &= (1U << bitCount) - 1;
  }
  return bits == 0 ? static_cast<ssize_t>(length) : -1;
}

}  // namespace vesk
