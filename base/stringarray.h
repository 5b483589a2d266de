/// The two-way view of a string dictionary, and the hash of the library's maps.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <boost/unordered_map.hpp>

#include "util/include/export.h"

/// The 32-bit hash of that name, public domain, over `length` bytes; words are little-endian on any host.
FOKRAZO_API unsigned int MurmurHash2(const void* key, int length, unsigned int seed);

namespace vesk {

using ::MurmurHash2;

/// The hash functor of the logger tables and of the dictionary.
struct FOKRAZO_API murhash {
  std::size_t operator()(const std::string& text) const;
};

/// Index to string and string to index over a list and its map, which are the caller's and must outlive it.
/// Thread-safety: read-only; any number of threads.
class FOKRAZO_API StringArray {
 public:
  using Map = boost::unordered_map<std::string, int, murhash>;
  using Vector = std::vector<std::string>;

  StringArray(const Map* map, const Vector* vector);
  virtual ~StringArray();

  /// The entries of the list when the view was made.
  int count() const { return m_count; }
  /// The string of an index; one shared empty string for an index out of range.
  const std::string& operator[](int index) const;
  /// The index of a string, -1 if it is no entry.
  int operator[](const std::string& text) const;

 private:
  const Map* m_map;
  const Vector* m_vector;
  int m_count;
};

}  // namespace vesk
