/// The entries of all nine string dictionaries. Internal.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vesk {
namespace stringdict {

/// One bit for each list, oldest first, and the ranges of lists that have an entry.
enum Lists : uint16_t {
  k15487 = 1 << 0,
  k15667 = 1 << 1,
  k12258 = 1 << 2,
  k27271 = 1 << 3,
  k30618 = 1 << 4,
  k60690 = 1 << 5,
  k45829 = 1 << 6,
  k36361 = 1 << 7,
  k16090 = 1 << 8,

  kAll = 0x1ff,
  kUntil27271 = k15487 | k15667 | k12258 | k27271,
  kFrom15667 = kAll & ~k15487,
  kFrom12258 = kFrom15667 & ~k15667,
  kFrom30618 = kAll & ~kUntil27271,
  kFrom45829 = k45829 | k36361 | k16090,
  kFrom36361 = k36361 | k16090,
  kFrom16090 = k16090,
};

/// An entry of each of `lists`. Its index in a list is the number of that list's entries before it, so the
/// order of the rows is part of the format: never reorder.
struct Entry {
  std::string_view text;
  uint16_t lists;
};

constexpr size_t kEntryCount = 399;
/// The length of the longest entry; longer texts are not searched.
constexpr size_t kLongestEntry = 35;
extern const Entry kEntries[kEntryCount];

/// A text that sorts by its unsigned bytes, a prefix first. The first eight bytes, as one number, decide
/// nearly every comparison.
class Key {
 public:
  constexpr Key() = default;
  explicit constexpr Key(std::string_view text) : m_text(text) {
    for (size_t i = 0; i < sizeof m_lead; ++i)
      m_lead = m_lead << 8 | (i < text.size() ? static_cast<unsigned char>(text[i]) : 0);
  }
  constexpr std::string_view text() const { return m_text; }
  bool operator<(const Key& other) const {
    return m_lead != other.m_lead ? m_lead < other.m_lead : m_text < other.m_text;
  }

 private:
  uint64_t m_lead = 0;
  std::string_view m_text;
};

/// The entries of the current list by index.
constexpr size_t kCurrentCount = 398;
extern const std::array<Key, kCurrentCount> kCurrent;

/// The number of entries of a list. Requires: one bit.
size_t entryCount(Lists list);

}  // namespace stringdict
}  // namespace vesk
