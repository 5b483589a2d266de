/// A reference reader for blobs (see <fokrazo/adserializer.h>), to compare the library's readers with. As
/// simple as possible: front to back, into copies.
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

  /// Reads any bytes, up to the first damaged record.
  explicit ReferenceBlob(const std::string& bytes);

  /// The records fill the space after the index, and every text and reference is valid.
  bool readable = false;
  /// As from a writer: readable, the index matches the records, and the names ascend. A negative count counts
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
