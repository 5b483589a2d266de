#include <fokrazo/adserializer.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <ostream>
#include <tuple>
#include <utility>

#include <fokrazo/stringdict.h>
#include "lrpc/model/adserializer_internal.h"
#include "lrpc/model/stringdict_table.h"
#include "util/error/throw.h"
#include "util/text/printed.h"

int GOFAST1 = 1;

namespace vesk {

using namespace blob;

namespace {

constexpr char kSource[] = "lrpc/adserializer";

bool sameName(std::string_view name, std::string_view wanted) {
  return GOFAST1 ? name == wanted : std::string(name).compare(std::string(wanted)) == 0;
}

// The index of an entry of the dictionary, or -1.
int referenceOf(const std::string& text) {
  return text.size() <= stringdict::kLongestEntry ? ADSerializer::m_dictionary[text] : -1;
}

size_t sizeOfText(const std::string& text) {
  return referenceOf(text) >= 0 ? kWord : kWord + text.size();
}

/// The same entries as m_dictionary, without a call for each.
struct CurrentDictionary {
  static constexpr uint32_t count() { return stringdict::kCurrentCount; }
  std::string_view operator[](uint32_t index) const { return stringdict::kCurrent[index].text(); }
};

[[noreturn]] void throwBadIndex(uint32_t index) {
  FOKRAZO_THROW(BadDataException, "BadDataException", 0,
                "Bad index value %d in serialized object, size:%ld. Potential cache corruption or shared "
                "library and agent version mismatch.",
                static_cast<int>(index), static_cast<long>(CurrentDictionary::count()));
}

[[noreturn]] void throwBadLength(uint32_t length, size_t size) {
  FOKRAZO_THROW(BadDataException, "BadDataException", 0,
                "Bad length value %d in serialized object, size:%ld. Potential cache corruption or shared "
                "library and agent version mismatch.",
                static_cast<int>(length), static_cast<long>(size));
}

}  // namespace

const StringArray ADSerializer::m_dictionary(GetDictionaryMap, GetDictionaryVector);

/// A text field: its text and its end.
struct ADSerializer::Text {
  std::string_view text;
  const unsigned char* next = nullptr;
};

ADSerializer::ADSerializer(unsigned int size, char* data, bool ownsData)
    : m_size(size), m_data(reinterpret_cast<unsigned char*>(data)), m_ownsData(ownsData) {
  if (size < kHeaderSize || !data) throwBadLength(kHeaderSize, size);
}

ADSerializer::ADSerializer(unsigned int size)
    : m_size(size), m_data(static_cast<unsigned char*>(malloc(size))), m_cursor(m_data), m_ownsData(true) {
  if (!m_data) throw std::bad_alloc();
}

ADSerializer::~ADSerializer() {
  if (m_ownsData) free(m_data);
}

std::unique_ptr<ADSerializer> ADSerializer::clone() const {
  if (!m_data) return std::make_unique<ADSerializer>();
  std::unique_ptr<ADSerializer> copy(new ADSerializer(m_size));
  memcpy(copy->m_data, m_data, m_size);
  return copy;
}

// Header.

long ADSerializer::getAcquired() const {
  return header<int32_t>(kAcquired);
}

void ADSerializer::setAcquired(long acquired) {
  setHeader(kAcquired, static_cast<int32_t>(acquired));
}

Guid ADSerializer::guid() const {
  return header<Guid>(kGuid);
}

Int64 ADSerializer::getUsn() const {
  return Int64(header<int64_t>(kUsn));
}

void ADSerializer::setUsn(Int64 usn) {
  setHeader(kUsn, static_cast<int64_t>(usn.value()));
}

bool ADSerializer::getIndexed() const {
  return header<uint32_t>(kFlags) & kIsIndexed;
}

void ADSerializer::setIndexed(bool indexed) {
  uint32_t others = header<uint32_t>(kFlags) & ~kIsIndexed;
  setHeader(kFlags, indexed ? others | kIsIndexed : others);
}

// Random access. No reader leaves the blob.

// The number of index slots; 0 if the blob is too short for what its header says.
inline uint32_t ADSerializer::indexCount() const {
  uint32_t count = header<uint32_t>(kCount);
  return count <= (m_size - kHeaderSize) / kWord ? count : 0;
}

inline uint32_t ADSerializer::slot(uint32_t position) const {
  return load<uint32_t>(m_data + kHeaderSize + kWord * position);
}

void ADSerializer::setSlot(uint32_t position, uint32_t offset) {
  store(m_data + kHeaderSize + kWord * position, offset);
}

inline bool ADSerializer::readText(const unsigned char* position, Text& field) const {
  size_t left = remaining(position);
  if (left < kWord) return false;
  uint32_t word = load<uint32_t>(position);
  field.next = position + kWord;
  if (word & kReference) {
    const uint32_t index = word & ~kReference;
    field.text = index < CurrentDictionary::count() ? CurrentDictionary()[index] : std::string_view("");
    return true;
  }
  if (word > left - kWord) return false;
  field.text = std::string_view(reinterpret_cast<const char*>(field.next), word);
  field.next += word;
  return true;
}

inline bool ADSerializer::readName(uint32_t offset, Text& name) const {
  return offset < m_size && readText(m_data + offset, name);
}

inline std::string_view ADSerializer::nameAt(uint32_t offset) const {
  Text name;
  return readName(offset, name) ? name.text : std::string_view();
}

const char* ADSerializer::getName(unsigned int offset, unsigned int& length) const {
  std::string_view name = nameAt(offset);
  length = name.size();
  return name.data();
}

// The sort key of the name at an offset; of the empty name if it is unreadable.
inline stringdict::Key ADSerializer::keyAt(uint32_t offset) const {
  if (offset < m_size && m_size - offset >= kWord) {
    const uint32_t index = load<uint32_t>(m_data + offset) ^ kReference;  // huge if the text is inline
    if (index < CurrentDictionary::count()) return stringdict::kCurrent[index];
  }
  return stringdict::Key(nameAt(offset));
}

// Returns the slot of the name, or the number of slots if the blob lacks it. `found` is the name in the blob.
uint32_t ADSerializer::search(std::string_view name, Text& found) const {
  const uint32_t end = indexCount();
  const stringdict::Key wanted(name);
  uint32_t first = 0;
  for (uint32_t count = end; count > 0;) {
    const uint32_t half = count / 2;
    if (keyAt(slot(first + half)) < wanted) {
      first += half + 1;
      count -= half + 1;
    } else {
      count = half;
    }
  }
  return first < end && readName(slot(first), found) && sameName(found.text, name) ? first : end;
}

const unsigned char* ADSerializer::findAttribute(std::string_view name) const {
  Text found;
  const uint32_t position = search(name, found);
  return position < indexCount() ? m_data + kHeaderSize + kWord * position : nullptr;
}

const unsigned char* ADSerializer::findAttributeKey(std::string_view name) const {
  const unsigned char* found = findAttribute(name);
  return found ? m_data + load<uint32_t>(found) : nullptr;
}

const unsigned char* ADSerializer::findAttributeData(std::string_view name) const {
  Text found;
  return search(name, found) < indexCount() ? valueCountAfter(found) : nullptr;
}

const unsigned char* ADSerializer::findAttributeData(const unsigned char* record) const {
  Text name;
  if (record < m_data || record >= m_data + m_size || !readText(record, name)) return nullptr;
  return valueCountAfter(name);
}

inline const unsigned char* ADSerializer::valueCountAfter(const Text& name) const {
  return remaining(name.next) >= kWord ? name.next : nullptr;
}

// Calls `take` with each value after `valueCount`. Returns their end, or null if they run past the blob.
template <class Take>
inline const unsigned char* ADSerializer::walkValues(const unsigned char* valueCount, Take take) const {
  Text value;
  value.next = valueCount + kWord;
  for (int32_t left = load<int32_t>(valueCount); left > 0; --left) {
    if (!readText(value.next, value)) return nullptr;
    take(value.text);
  }
  return value.next;
}

// Appends the values after `valueCount` that lie inside the blob. Returns as walkValues.
const unsigned char* ADSerializer::readValues(const unsigned char* valueCount, ADAttribute& attribute) const {
  const unsigned char* end =
      walkValues(valueCount, [&](std::string_view value) { attribute.emplace_back(value); });
  if (!attribute.empty()) attribute.setMarks(false, true);
  return end;
}

bool ADSerializer::exists(std::string_view name, bool needValue) const {
  const unsigned char* valueCount = findAttributeData(name);
  return valueCount && (!needValue || load<int32_t>(valueCount) > 0);
}

ADAttribute ADSerializer::find(const std::string& name) const {
  ADAttribute attribute(name);
  const unsigned char* valueCount = findAttributeData(name);
  if (valueCount) readValues(valueCount, attribute);
  return attribute;
}

void ADSerializer::read(ADAttribute& attribute) const {
  attribute.clear();
  attribute.setMarks(false, false);
  const unsigned char* valueCount = findAttributeData(attribute.name());
  if (valueCount) readValues(valueCount, attribute);
}

const unsigned char* ADSerializer::recordEnd(const unsigned char* record) const {
  const unsigned char* valueCount = findAttributeData(record);
  return valueCount ? walkValues(valueCount, [](std::string_view) {}) : nullptr;
}

unsigned int ADSerializer::erase(std::string_view name) {
  const unsigned char* found = findAttribute(name);
  if (!found) return 0;
  uint32_t count = indexCount();
  uint32_t position = (found - m_data - kHeaderSize) / kWord;
  uint32_t indexEnd = kHeaderSize + kWord * count;
  uint32_t record = load<uint32_t>(found);
  const unsigned char* end = recordEnd(m_data + record);
  if (record < indexEnd || !end) return 0;

  uint32_t length = end - (m_data + record);
  memmove(m_data + record, end, remaining(end));
  m_size -= length;
  for (uint32_t later = position + 1; later < count; ++later) setSlot(later - 1, slot(later) - length);
  memmove(m_data + indexEnd - kWord, m_data + indexEnd, m_size - indexEnd);
  m_size -= kWord;
  for (uint32_t kept = 0; kept < count - 1; ++kept) setSlot(kept, slot(kept) - kWord);
  setHeader(kCount, count - 1);
  return 1;
}

// Reading everything.

// The first record, after the index; the end of the blob if the index runs past it.
const unsigned char* ADSerializer::recordsBegin(unsigned int indexOffset) const {
  uint64_t offset = indexOffset + uint64_t{kWord} * header<uint32_t>(kCount);
  return m_data + std::min<uint64_t>(offset, m_size);
}

void ADSerializer::readAll(ADAttributeMap& attributes, unsigned int indexOffset,
                           const StringArray& dictionary) {
  m_cursor = m_data + (recordsBegin(indexOffset) - m_data);
  if (&dictionary == &m_dictionary)
    takeRecords(attributes, CurrentDictionary());
  else
    takeRecords(attributes, dictionary);
}

// Records are usually sorted, so each is first tried at the end of the map.
template <class Dictionary>
void ADSerializer::takeRecords(ADAttributeMap& attributes, const Dictionary& dictionary) {
  while (m_cursor < m_data + m_size) {
    const std::string_view name = takeText(dictionary);
    const size_t before = attributes.size();
    const auto entry = attributes.emplace_hint(attributes.end(), std::piecewise_construct,
                                               std::forward_as_tuple(name), std::forward_as_tuple(name));
    if (attributes.size() > before)
      takeValues(entry->second, dictionary);
    else
      skipValues(dictionary);
  }
}

inline uint32_t ADSerializer::takeWord() {
  if (remaining(m_cursor) < kWord) throwBadLength(kWord, m_size);
  uint32_t word = load<uint32_t>(m_cursor);
  m_cursor += kWord;
  return word;
}

template <class Dictionary>
inline std::string_view ADSerializer::takeText(const Dictionary& dictionary) {
  uint32_t word = takeWord();
  if (word & kReference) {
    uint32_t index = word & ~kReference;
    if (index >= static_cast<uint32_t>(dictionary.count())) throwBadIndex(index);
    return dictionary[index];
  }
  return takeInline(word);
}

inline std::string_view ADSerializer::takeInline(uint32_t length) {
  if (length > remaining(m_cursor)) throwBadLength(length, m_size);
  std::string_view text(reinterpret_cast<const char*>(m_cursor), length);
  m_cursor += length;
  return text;
}

template <class Dictionary>
inline void ADSerializer::takeValues(ADAttribute& attribute, const Dictionary& dictionary) {
  for (int32_t left = static_cast<int32_t>(takeWord()); left > 0; --left)
    attribute.emplace_back(takeText(dictionary));
  attribute.setMarks(false, true);
}

template <class Dictionary>
void ADSerializer::skipValues(const Dictionary& dictionary) {
  for (int32_t left = static_cast<int32_t>(takeWord()); left > 0; --left) takeText(dictionary);
}

// Writing.

inline void ADSerializer::putWord(uint32_t word) {
  store(m_cursor, word);
  m_cursor += kWord;
}

size_t ADSerializer::sizeAttribute(const ADAttribute& attribute) {
  size_t size = sizeOfText(attribute.name()) + kWord;
  for (const std::string& value : attribute) size += sizeOfText(value);
  return size;
}

void ADSerializer::putAttribute(const ADAttribute& attribute) {
  putText(attribute.name());
  putWord(attribute.size());
  for (const std::string& value : attribute) putText(value);
}

void ADSerializer::putText(const std::string& text) {
  int reference = referenceOf(text);
  if (reference >= 0) return putWord(kReference | static_cast<uint32_t>(reference));
  putWord(text.size());
  memcpy(m_cursor, text.data(), text.size());
  m_cursor += text.size();
}

// Printing.

void ADSerializer::dump() const {
  printTo(stdout, [this](std::ostream& out) { dump(out); });
}

void ADSerializer::dump(std::ostream& out) const {
  dump(this, out);
}

void ADSerializer::dump(const ADSerializer* serializer, std::ostream& out) {
  if (!serializer) {
    out << "null ADSerializer\n";
  } else if (!serializer->m_data) {
    out << "No Serialized Data\n";
  } else {
    out << "Serialized Data\n";
    serializer->dumpHeader(out);
    const unsigned char* position = serializer->recordsBegin(kHeaderSize);
    while (position && serializer->remaining(position) > 0) position = serializer->dumpRecord(position, out);
  }
}

void ADSerializer::dumpHeader(std::ostream& out) const {
  out << "  ADOHeader:\n"
      << "    m_acquired: " << getAcquired() << '\n'
      << "    m_guid: " << guid().toString() << '\n'
      << "    m_usn: " << getUsn() << '\n'
      << "    isIndexed: " << (getIndexed() ? 1 : 0) << '\n';
}

// Returns the end of the record, or null after a damaged one. An empty name counts as damage.
const unsigned char* ADSerializer::dumpRecord(const unsigned char* record, std::ostream& out) const {
  const unsigned char* valueCount = findAttributeData(record);
  const unsigned char* end = nullptr;
  if (valueCount && load<uint32_t>(record) != 0) {
    ADAttribute attribute(nameAt(record - m_data));
    end = readValues(valueCount, attribute);
    out << "  ";
    attribute.dump(out);
  }
  size_t left = remaining(record);
  if (!end) out << "truncated serializer at " << left - std::min(left, kWord) << " bytes\n";
  return end;
}

}  // namespace vesk
