/// The hash function of the library's maps.
#pragma once

#include <cstddef>
#include <string>

#include <fokrazo/export.h>

/// The public-domain 32-bit hash MurmurHash2 of `length` bytes; words are read as little-endian on any host.
/// Thread-safe.
FOKRAZO_API unsigned int MurmurHash2(const void* key, int length, unsigned int seed);

namespace vesk {

using ::MurmurHash2;

/// The hash functor of the logger tables and of the dictionary.
struct FOKRAZO_API murhash {
  /// MurmurHash2 of the text.
  std::size_t operator()(const std::string& text) const;
};

}  // namespace vesk
