#include "fuzz/reference_blob.h"

#include <fokrazo/stringdict.h>

namespace fuzz {

namespace {

constexpr size_t kHeader = 36;
constexpr size_t kCount = 32;

}  // namespace

ReferenceBlob::ReferenceBlob(const std::string& bytes) : m_bytes(bytes) {
  if (bytes.size() < kHeader) return;
  const uint32_t count = word(kCount);
  m_position = kHeader;
  for (uint32_t i = 0; i < count && m_position < bytes.size(); ++i) m_position += 4;
  if (m_position > bytes.size()) m_position = bytes.size();
  readable = true;
  while (readable && m_position < bytes.size()) readable = takeRecord();
  wellFormed = readable && indexFits(count);
}

uint32_t ReferenceBlob::word(size_t offset) const {
  uint32_t value = 0;
  for (size_t i = 4; i > 0; --i) value = value << 8 | static_cast<unsigned char>(m_bytes[offset + i - 1]);
  return value;
}

bool ReferenceBlob::take(std::string& text) {
  if (m_position + 4 > m_bytes.size()) return false;
  const uint32_t field = word(m_position);
  m_position += 4;
  if (field >= 0x80000000) {
    const auto& dictionary = vesk::GetDictionaryVector();
    const uint32_t index = field - 0x80000000;
    if (index >= dictionary.size()) return false;
    text = dictionary[index];
    return true;
  }
  if (field > m_bytes.size() - m_position) return false;
  text = m_bytes.substr(m_position, field);
  m_position += field;
  return true;
}

bool ReferenceBlob::takeRecord() {
  Record record = {m_position, "", {}};
  if (!take(record.name) || m_position + 4 > m_bytes.size()) return false;
  const auto count = static_cast<int32_t>(word(m_position));
  m_position += 4;
  for (int32_t i = 0; i < count; ++i) {
    record.values.emplace_back();
    if (!take(record.values.back())) return false;
  }
  records.push_back(record);
  return true;
}

bool ReferenceBlob::indexFits(uint32_t count) const {
  if (count != records.size() || m_bytes.size() < kHeader + size_t{4} * count) return false;
  for (uint32_t i = 0; i < count; ++i) {
    if (word(kHeader + 4 * i) != records[i].offset) return false;
    if (i > 0 && records[i].name <= records[i - 1].name) return false;
  }
  return true;
}

}  // namespace fuzz
