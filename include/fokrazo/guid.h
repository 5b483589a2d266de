/// Identifiers of directory objects.
#pragma once

#include <array>
#include <cstddef>
#include <string>

#include <boost/shared_ptr.hpp>

#include <fokrazo/export.h>

namespace vesk {

/// The 16-byte identifier of a directory object, in stored order: the order of the directory's binary
/// attribute, in which the first three fields of the conventional text form are little-endian.
///   toString        33221100554477668899aabbccddeeff      stored order
///   toMSString      33221100-5544-7766-8899-aabbccddeeff  stored order, with hyphens
///   toRealMSString  00112233-4455-6677-8899-aabbccddeeff  the conventional text form
///   toEscapedString \33\22\11\00…                         stored order, for LDAP filters
///   toDN            <GUID=33221100554477668899aabbccddeeff>
/// Digits are lower-case on output; input may be of either case.
/// Thread-safety: a plain value of 16 bytes.
class FOKRAZO_API Guid {
 public:
  /// Size in bytes.
  static constexpr size_t kSize = 16;

  /// All zeros.
  Guid() = default;
  /// These bytes, in stored order.
  constexpr explicit Guid(const std::array<unsigned char, kSize>& bytes) : m_bytes(bytes) {}
  /// The first 16 of `available` bytes in stored order; missing ones are zero. `bytes` may be null if there
  /// are none.
  Guid(const unsigned char* bytes, size_t available);

  /// Reads 16 pairs of digits in stored order, with or without a "-" before a pair. Nothing is checked: any
  /// other character counts as 0, and so does what is missing.
  void fromString(const std::string& text);
  /// Reads the conventional text form, which has 36 characters; as unchecked as fromString.
  void fromRealMSString(const std::string& text);
  /// Takes the first 16 bytes of the string as they are; missing ones are zero.
  void fromHexValue(const std::string& bytes);
  /// Reads text that begins as toDN writes it; what follows is ignored.
  /// @throws BadDataException any other text; the value is then unchanged.
  void fromExtendedDN(const std::string& text);

  /// The forms shown above.
  std::string toString() const;
  std::string toMSString() const;
  std::string toRealMSString() const;
  std::string toEscapedString() const;
  std::string toDN() const;

  /// Whether the text, which may be null, looks like the conventional form: 36 characters, digits and "-".
  static bool isValidGuidStringFormat(const char* text);
  /// Converts toMSString's form to toRealMSString's and back. Text shorter than the first three groups is
  /// returned unchanged.
  static std::string swapBytesMSGuid(const std::string& text);

  /// Whether all bytes are zero.
  bool isNull() const { return *this == Guid(); }
  /// The 16 bytes in stored order.
  const unsigned char* bytes() const { return m_bytes.data(); }

  /// Whether all bytes are the same.
  bool operator==(const Guid& other) const { return m_bytes == other.m_bytes; }
  bool operator!=(const Guid& other) const { return m_bytes != other.m_bytes; }
  /// By bytes; for the keys of maps.
  bool operator<(const Guid& other) const { return m_bytes < other.m_bytes; }

 private:
  std::array<unsigned char, kSize> m_bytes = {};
};

/// A shared identifier of zeros.
FOKRAZO_API extern const Guid NULL_GUID;

struct GuidListImpl;

/// A list of identifiers. insert adds no duplicates; the constructor keeps those in its data. A handle:
/// copies share one list. A null list reads as an empty one; the first insert creates a body. Thread-safety:
/// one thread at a time for all handles of a list.
class FOKRAZO_API GuidList {
 public:
  /// Valid until the list changes.
  using const_iterator = const Guid*;

  /// A null list.
  GuidList() = default;
  /// One identifier for each 16 bytes; a remainder is ignored.
  GuidList(const unsigned char* data, int size);

  /// Whether this is a null list, which has no items.
  bool isNull() const { return !m_impl; }
  /// As in a standard container.
  bool empty() const { return size() == 0; }
  size_t size() const;
  const_iterator begin() const;
  const_iterator end() const;

  /// Appends, unless the list already has it.
  void insert(const Guid& guid);
  /// All identifiers back to back, 16 bytes each, in a buffer from malloc that the caller frees; null for a
  /// null or empty list. @throws std::bad_alloc
  unsigned char* serialize() const;

 private:
  boost::shared_ptr<GuidListImpl> m_impl;
};

}  // namespace vesk
