/// Object identifiers.
#pragma once

#include <list>

#include <fokrazo/export.h>

namespace vesk {

/// The encoded bytes of one object identifier, at most 64, held inline and wiped on destruction.
/// Thread-safety: a plain value.
class FOKRAZO_API Oid {
 public:
  /// Longest identifier, in bytes.
  static constexpr unsigned int kMaxSize = 64;

  Oid() = default;
  /// A copy of the bytes; `bytes` may be null if there are none.
  /// @throws BadDataException more than 64 bytes
  Oid(const unsigned char* bytes, unsigned int size);
  /// Copies the bytes.
  Oid(const Oid& other);
  Oid& operator=(const Oid& other);
  virtual ~Oid();

  /// The storage of 64 bytes; size() of them are in use.
  unsigned char* value() { return m_value; }
  const unsigned char* value() const { return m_value; }
  /// The bytes in use.
  unsigned int size() const { return m_size; }
  /// Whether it has no bytes, or only zeros.
  bool isNull() const;
  /// Empties it and zeroes the storage.
  void setNull();

  /// Whether both have the same bytes.
  bool operator==(const Oid& other) const;
  bool operator!=(const Oid& other) const { return !(*this == other); }

 private:
  unsigned int m_size = 0;
  unsigned char m_value[kMaxSize] = {};
};

/// A shared empty identifier.
FOKRAZO_API extern const Oid NULL_OID;

/// A list of object identifiers, by value. Thread-safety: a plain value.
class FOKRAZO_API OidList {
 public:
  /// Valid as long as the list.
  using const_iterator = std::list<Oid>::const_iterator;

  /// Appends.
  void add(const Oid& oid) { m_oids.push_back(oid); }
  /// @throws BadDataException more than 64 bytes
  void add(const unsigned char* bytes, unsigned int size) { m_oids.emplace_back(bytes, size); }

  /// As of a standard container.
  bool empty() const { return m_oids.empty(); }
  std::size_t size() const { return m_oids.size(); }
  const_iterator begin() const { return m_oids.begin(); }
  const_iterator end() const { return m_oids.end(); }

 private:
  std::list<Oid> m_oids;
};

}  // namespace vesk
