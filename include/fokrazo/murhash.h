/// The hash of the library's maps.
#pragma once

#include <cstddef>
#include <string>

#include <fokrazo/export.h>

/// The 32-bit hash of that name, public domain, over `length` bytes; words are little-endian on any host.
FOKRAZO_API unsigned int MurmurHash2(const void* key, int length, unsigned int seed);

namespace vesk {

using ::MurmurHash2;

/// The hash functor of the logger tables and of the dictionary.
struct FOKRAZO_API murhash {
  /// MurmurHash2 of the text.
  std::size_t operator()(const std::string& text) const;
};

}  // namespace vesk
