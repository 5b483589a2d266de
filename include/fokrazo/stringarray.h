/// A two-way view of a string dictionary.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <boost/unordered_map.hpp>

#include <fokrazo/export.h>
#include <fokrazo/murhash.h>

namespace vesk {

/// Maps index to string and string to index, using a list and its map, which must outlive it. Thread-safety:
/// read-only; any number of threads.
class FOKRAZO_API StringArray {
 public:
  /// The list and the map.
  using Map = boost::unordered_map<std::string, int, murhash>;
  using Vector = std::vector<std::string>;

  /// `indexes` is the inverse of `strings`, whose size is read now.
  StringArray(const Map* indexes, const Vector* strings);
  /// A view of what these functions return; they are called on first use. For constant-initialized views of
  /// lists that few programs need.
  constexpr StringArray(const Map& (*findMap)(), const Vector& (*findVector)())
      : m_findMap(findMap), m_findVector(findVector) {}
  virtual ~StringArray();

  /// The number of entries.
  int count() const { return m_vector ? m_count : static_cast<int>(m_findVector().size()); }
  /// The string of an index; one shared empty string for an index out of range.
  const std::string& operator[](int index) const;
  /// The index of a string; -1 if the list does not have it.
  int operator[](const std::string& text) const;

 private:
  const Map& map() const { return m_map ? *m_map : m_findMap(); }
  const Vector& vector() const { return m_vector ? *m_vector : m_findVector(); }

  const Map* m_map = nullptr;
  const Vector* m_vector = nullptr;
  int m_count = 0;
  const Map& (*m_findMap)() = nullptr;  // used if the pointers are null
  const Vector& (*m_findVector)() = nullptr;
};

}  // namespace vesk
