/// The blob of a directory object (see <fokrazo/adserializer.h>) once more, read in the plainest way: from
/// front to back, into copies. What the library's readers say is held against it.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace fuzz {

struct ReferenceBlob {
  struct Record {
    size_t offset;
    std::string name;
    std::vector<std::string> values;
  };

  /// Reads any bytes. Records are read up to the first that is damaged.
  explicit ReferenceBlob(const std::string& bytes);

  /// The records fill all that stands behind the index, and every text and reference can be read.
  bool readable = false;
  /// As a writer makes it: also the index is what the records say, and the names rise. A count below 0 counts
  /// as 0.
  bool wellFormed = false;
  std::vector<Record> records;

 private:
  uint32_t word(size_t offset) const;
  bool take(std::string& text);
  bool takeRecord();
  bool indexFits(uint32_t count) const;

  const std::string& m_bytes;
  size_t m_position = 0;
};

}  // namespace fuzz
