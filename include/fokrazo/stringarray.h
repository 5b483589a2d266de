/// The two-way view of a string dictionary.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <boost/unordered_map.hpp>

#include <fokrazo/export.h>
#include <fokrazo/murhash.h>

namespace vesk {

/// Index to string and string to index over a list and its map, which must outlive it.
/// Thread-safety: read-only; any number of threads.
class FOKRAZO_API StringArray {
 public:
  /// The list and the map.
  using Map = boost::unordered_map<std::string, int, murhash>;
  using Vector = std::vector<std::string>;

  /// Over a list and its map; the list is counted here.
  StringArray(const Map* indexes, const Vector* strings);
  /// Over the list and map that a function returns, which is called when they are first needed: for a view
  /// that is ready before any code runs, over a list that few programs need.
  constexpr StringArray(const Map& (*findMap)(), const Vector& (*findVector)())
      : m_findMap(findMap), m_findVector(findVector) {}
  virtual ~StringArray();

  /// The entries of the list, when the view was made over one that was there.
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
  const Map& (*m_findMap)() = nullptr;  // these where the pointers are null
  const Vector& (*m_findVector)() = nullptr;
};

}  // namespace vesk
