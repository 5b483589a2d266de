/// The serialized form of a directory object, the blob: the form on the socket and in the daemon's cache.
/// Single attributes can be read without unpacking the whole object.
///
/// Integers are in host order and nothing is aligned:
///   0   4    time of acquisition, seconds since the epoch
///   4   16   GUID
///   20  8    update sequence number
///   28  4    flags, bit 0: isIndexed
///   32  4    number N of attributes
///   36  4*N  index: the offset of each record from the blob's first byte, in the order of the names
///   ...      N records: name, number of values (4 bytes, signed), values
/// A name or a value is a signed word of 4 bytes: if negative, it is an index into the string dictionary with
/// the top bit set; otherwise it is a length, and that many bytes of text follow. The blob contains neither
/// its own length nor the number of the dictionary that it was written with.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string_view>

#include <fokrazo/adattribute.h>
#include <fokrazo/export.h>
#include <fokrazo/guid.h>
#include <fokrazo/int64.h>
#include <fokrazo/stringarray.h>

/// 1 (the default) selects the fast paths of the lookups here and in ADObject; 0 selects slower ones with the
/// same results. Set it before the first object is read.
FOKRAZO_API extern int GOFAST1;

namespace vesk {

class ADObject;
namespace stringdict {
class Key;
}

/// Holds one blob: reads, searches, shrinks and prints it. No reader leaves the blob, whatever its bytes;
/// what cannot be read counts as missing.
/// Thread-safety: one thread at a time. The dictionary is constant once the library is loaded.
class FOKRAZO_API ADSerializer {
 public:
  /// Bytes before the index.
  static constexpr unsigned int kHeaderSize = 36;

  /// The dictionary of all writers and, by default, of all readers.
  static const StringArray m_dictionary;

  /// Holds no blob, and reads as an object without attributes.
  ADSerializer() = default;
  /// Uses `data` without copying it; with `ownsData` it comes from malloc and is freed with this object.
  /// @throws BadDataException shorter than the header; `data` then remains the caller's
  ADSerializer(unsigned int size, char* data, bool ownsData);
  ~ADSerializer();
  ADSerializer(const ADSerializer&) = delete;
  ADSerializer& operator=(const ADSerializer&) = delete;
  /// An object with its own copy of the blob.
  std::unique_ptr<ADSerializer> clone() const;

  /// A new blob of all attributes of `object`, which is first read completely. Marks its attributes
  /// serialized; if the object has no sequence number, sets it from the attribute uSNChanged.
  static std::unique_ptr<ADSerializer> serialize(ADObject& object);
  /// Bytes of the header and all records, without the index, of `object`, which is first read completely.
  static size_t calcSize(ADObject& object);
  /// Bytes of the record of one attribute.
  static size_t sizeAttribute(const ADAttribute& attribute);

  /// The blob, and whether it is freed with this object.
  unsigned int size() const { return m_size; }
  const char* data() const { return reinterpret_cast<const char*>(m_data); }
  bool ownsData() const { return m_ownsData; }

  /// The fields of the header; zero while there is no blob.
  long getAcquired() const;
  void setAcquired(long acquired);
  Guid guid() const;
  Int64 getUsn() const;
  void setUsn(Int64 usn);
  bool getIndexed() const;
  void setIndexed(bool indexed);

  /// The name of the record at `offset`: `length` bytes with no terminator, inside the blob or the
  /// dictionary. Null with length 0 if there is no readable name.
  const char* getName(unsigned int offset, unsigned int& length) const;
  /// The index slot of an attribute, null if it is not there. Slots are unaligned.
  const unsigned char* findAttribute(std::string_view name) const;
  /// The record of an attribute, null if it is not there.
  const unsigned char* findAttributeKey(std::string_view name) const;
  /// The number of values of an attribute, 4 unaligned bytes; null if the attribute is not there.
  const unsigned char* findAttributeData(std::string_view name) const;
  /// As above, for the record that begins at `record`; null for null and where no count can be read.
  const unsigned char* findAttributeData(const unsigned char* record) const;

  /// Whether there is such an attribute, with `needValue` one that has a value.
  bool exists(std::string_view name, bool needValue) const;
  /// A copy of one attribute, marked serialized; without values and flags if the blob does not have it. A
  /// reference past the dictionary reads as the empty string.
  ADAttribute find(const std::string& name) const;
  /// As find, into `attribute`, whose name is the one to find.
  void read(ADAttribute& attribute) const;
  /// Adds all attributes to `attributes`; one that is already there stays as it is. The index begins at
  /// `indexOffset`; references are resolved with `dictionary`.
  /// @throws BadDataException an index or a length that points outside; `attributes` then holds what was
  /// read.
  void readAll(ADAttributeMap& attributes, unsigned int indexOffset, const StringArray& dictionary);
  /// Removes an attribute in place; the buffer does not move. Returns 1, or 0 if it is not there.
  unsigned int erase(std::string_view name);

  /// Prints header, attributes and any damage as text; to standard output by default.
  void dump() const;
  void dump(std::ostream& out) const;
  /// As above; `serializer` may be null.
  static void dump(const ADSerializer* serializer, std::ostream& out);

 private:
  struct Text;

  explicit ADSerializer(unsigned int size);

  size_t remaining(const unsigned char* position) const { return m_data + m_size - position; }
  template <class T>
  T header(size_t offset) const;
  template <class T>
  void setHeader(size_t offset, T value);
  const unsigned char* recordsBegin(unsigned int indexOffset) const;
  uint32_t indexCount() const;
  uint32_t slot(uint32_t position) const;
  void setSlot(uint32_t position, uint32_t offset);
  uint32_t search(std::string_view name, Text& found) const;
  bool readName(uint32_t offset, Text& name) const;
  std::string_view nameAt(uint32_t offset) const;
  stringdict::Key keyAt(uint32_t offset) const;
  const unsigned char* valueCountAfter(const Text& name) const;
  bool readText(const unsigned char* position, Text& field) const;
  template <class Take>
  const unsigned char* walkValues(const unsigned char* valueCount, Take take) const;
  const unsigned char* readValues(const unsigned char* valueCount, ADAttribute& attribute) const;
  const unsigned char* recordEnd(const unsigned char* record) const;

  template <class Dictionary>
  void takeRecords(ADAttributeMap& attributes, const Dictionary& dictionary);
  uint32_t takeWord();
  template <class Dictionary>
  std::string_view takeText(const Dictionary& dictionary);
  std::string_view takeInline(uint32_t length);
  template <class Dictionary>
  void takeValues(ADAttribute& attribute, const Dictionary& dictionary);
  template <class Dictionary>
  void skipValues(const Dictionary& dictionary);

  void putHeader(ADObject& object);
  void putAttribute(const ADAttribute& attribute);
  void putText(const std::string& text);
  void putWord(uint32_t word);

  void dumpHeader(std::ostream& out) const;
  const unsigned char* dumpRecord(const unsigned char* record, std::ostream& out) const;

  unsigned int m_size = 0;
  unsigned char* m_data = nullptr;
  unsigned char* m_cursor = nullptr;  // used by readAll and serialize
  bool m_ownsData = false;
};

}  // namespace vesk
