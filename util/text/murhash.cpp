#include <fokrazo/murhash.h>

#include <fokrazo/byteorder.h>

unsigned int MurmurHash2(const void* key, int length, unsigned int seed) {
  constexpr unsigned int kMultiplier = 0x5bd1e995;
  constexpr int kShift = 24;
  const auto* bytes = static_cast<const unsigned char*>(key);
  unsigned int hash = seed ^ static_cast<unsigned int>(length);
  for (; length >= 4; bytes += 4, length -= 4) {
    unsigned int word = vesk::GetLoHi32(bytes) * kMultiplier;
    word ^= word >> kShift;
    hash = hash * kMultiplier ^ word * kMultiplier;
  }
  if (length > 0) {
    unsigned int rest = 0;
    while (length-- > 0) rest = rest << 8 | bytes[length];
    hash = (hash ^ rest) * kMultiplier;
  }
  hash ^= hash >> 13;
  hash *= kMultiplier;
  return hash ^ hash >> 15;
}

namespace vesk {

std::size_t murhash::operator()(const std::string& text) const {
  constexpr unsigned int kSeed = 0xdeadbeef;
  return MurmurHash2(text.data(), static_cast<int>(text.size()), kSeed);
}

}  // namespace vesk
