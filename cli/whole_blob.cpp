#include "cli/whole_blob.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include <fokrazo/adserializer.h>

namespace cli {

namespace {

using vesk::ADSerializer;

constexpr size_t kWord = 4;
constexpr size_t kCountOffset = ADSerializer::kHeaderSize - kWord;
constexpr uint32_t kReference = 0x80000000;  // the rest of the word is an index into the dictionary
constexpr char kOtherRelease[] =
    "another release wrote it: name that with --as-of-release ('fokrazo dict --releases' lists them)";
constexpr char kBadCopy[] = "the copy is incomplete or altered: fetch the object again";

[[noreturn]] void damaged(const std::string& what, const char* advice) {
  throw DamagedBlob(what + "; " + advice);
}

std::string at(size_t position) {
  return " at byte " + std::to_string(position);
}

// Walks through a blob from its first byte to its last.
class BlobWalk {
 public:
  BlobWalk(const std::string& blob, uint32_t entries) : m_blob(blob), m_entries(entries) {}

  void requireWhole();

 private:
  size_t left() const { return m_blob.size() - m_position; }
  uint32_t takeWord();
  std::vector<uint32_t> takeIndex();
  bool takeText();
  void takeRecord();

  const std::string& m_blob;
  const uint32_t m_entries;
  size_t m_position = 0;
};

uint32_t BlobWalk::takeWord() {
  if (left() < kWord) damaged("it ends within the number" + at(m_position), kBadCopy);
  uint32_t word = 0;
  memcpy(&word, m_blob.data() + m_position, kWord);
  m_position += kWord;
  return word;
}

// The offsets of the records, ascending.
std::vector<uint32_t> BlobWalk::takeIndex() {
  m_position = kCountOffset;
  const uint32_t count = takeWord();
  if (count > left() / kWord)
    damaged("its " + std::to_string(m_blob.size()) + " bytes are too few for the " + std::to_string(count) +
                " attributes of its header",
            kBadCopy);
  std::vector<uint32_t> index(count);
  for (uint32_t& offset : index) offset = takeWord();
  std::sort(index.begin(), index.end());
  return index;
}

// Returns whether the text has any bytes.
bool BlobWalk::takeText() {
  const size_t begin = m_position;
  const uint32_t word = takeWord();
  if (word & kReference) {
    const uint32_t entry = word & ~kReference;
    if (entry >= m_entries)
      damaged("the text" + at(begin) + " is entry " + std::to_string(entry) +
                  " of the dictionary, which has " + std::to_string(m_entries),
              kOtherRelease);
    return true;
  }
  if (word > left())
    damaged("the text" + at(begin) + " has " + std::to_string(word) + " bytes, and only " +
                std::to_string(left()) + " are left",
            kBadCopy);
  m_position += word;
  return word > 0;
}

void BlobWalk::takeRecord() {
  const size_t begin = m_position;
  if (!takeText()) damaged("the attribute" + at(begin) + " has no name", kBadCopy);
  const auto values = static_cast<int32_t>(takeWord());
  if (values < 0) damaged("the attribute" + at(begin) + " has a negative number of values", kBadCopy);
  for (int32_t i = 0; i < values; ++i) takeText();
}

void BlobWalk::requireWhole() {
  if (m_blob.size() < ADSerializer::kHeaderSize)
    damaged("it has " + std::to_string(m_blob.size()) + " of the 36 bytes of a header", kBadCopy);
  const std::vector<uint32_t> index = takeIndex();
  std::vector<uint32_t> records;
  while (left() > 0) {
    records.push_back(static_cast<uint32_t>(m_position));
    takeRecord();
  }
  if (index != records) damaged("its index does not fit its attributes", kBadCopy);
}

}  // namespace

void requireWhole(const std::string& blob, uint32_t entries) {
  BlobWalk(blob, entries).requireWhole();
}

}  // namespace cli
