#include <fokrazo/stringarray.h>

#include "util/text/made_once.h"

namespace vesk {

StringArray::StringArray(const Map* indexes, const Vector* strings)
    : m_map(indexes), m_vector(strings), m_count(static_cast<int>(strings->size())) {}

StringArray::~StringArray() = default;

const std::string& StringArray::operator[](int index) const {
  static MadeOnce<const std::string> empty;
  return index >= 0 && index < count() ? vector()[static_cast<size_t>(index)] : empty.get();
}

int StringArray::operator[](const std::string& text) const {
  const Map& indexes = map();
  auto found = indexes.find(text);
  return found == indexes.end() ? -1 : found->second;
}

}  // namespace vesk
