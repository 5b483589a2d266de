#include "cli/base64.h"

namespace cli {

std::optional<std::string> decodeBase64(std::string text) {
  static const std::string kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  if (text.size() % 4 == 0)
    for (int padding = 0; padding < 2 && !text.empty() && text.back() == '='; ++padding) text.pop_back();
  if (text.size() % 4 == 1) return std::nullopt;

  std::string bytes;
  unsigned int bits = 0;
  unsigned int bitCount = 0;
  for (const char c : text) {
    const size_t value = kAlphabet.find(c);
    if (value == std::string::npos) return std::nullopt;
    bits = bits << 6 | static_cast<unsigned int>(value);
    bitCount += 6;
    if (bitCount < 8) continue;
    bitCount -= 8;
    bytes += static_cast<char>(bits >> bitCount);
    bits &= (1u << bitCount) - 1;
  }
  if (bits != 0) return std::nullopt;
  return bytes;
}

}  // namespace cli
