/// Windows security identifiers.
#pragma once

#include <cstddef>
#include <string>

#include <fokrazo/export.h>
#include <fokrazo/well_known_sid.h>

namespace vesk {

/// A security identifier, held in the binary form of the Windows security model and converted to and from
/// other forms on demand:
///   text         S-1-5-21-1-2-3-1104
///   base 64      AQUAAAAAAAUVAAAA…
///   escaped      \01\05\00…, for LDAP filters
///   extended DN  <SID=0105…>, other text around it is allowed
///   binary       revision, count, authority (6 bytes, big-endian), `count` little-endian 32-bit numbers
/// Authorities above 255 are not supported: only the last byte of the authority is read and printed. The
/// binary form may be shorter than its count says; nothing is read past its end, and missing bytes count as
/// zero.
/// Thread-safety: a plain value.
class FOKRAZO_API SID {
 public:
  /// The most sub-authorities that this class parses and sets.
  static constexpr unsigned int kMaxSubAuthorities = 5;

  /// The null SID.
  SID() = default;
  /// Reads any of these forms. Does not throw for bad text: the SID is then null, and the error is logged.
  explicit SID(const std::string& text);
  /// As for plain values.
  SID(const SID&) = default;
  SID(SID&&) noexcept = default;
  SID& operator=(const SID&) = default;
  SID& operator=(SID&&) noexcept = default;
  virtual ~SID();

  /// Takes the binary form, 8 + 4 x count bytes, which the caller guarantees to be readable; null makes the
  /// null SID.
  void init(const unsigned char* bytes);
  /// As above for untrusted bytes, `available` of them; missing ones become zero. Null or no bytes make the
  /// null SID.
  void init(const unsigned char* bytes, size_t available);
  /// The null SID has no bytes.
  void setNull() { m_bytes.clear(); }
  bool isNull() const { return m_bytes.empty(); }

  // Each of these reads the SID from one text form. On failure they throw BaseException with code 1004 and
  // leave the null SID.

  /// An empty string makes the null SID. A text without sub-authorities gets one, 0.
  void fromMSString(const std::string& text);
  /// The text ends with two padding characters and decodes to at most 1024 bytes.
  void fromB64String(const std::string& text);
  /// As in an LDAP filter: a backslash and two digits for each byte.
  void fromEscapedString(const std::string& text);
  /// Reads the text after "<SID=". The digits are not checked.
  void fromExtendedDN(const std::string& text);

  /// The text form; "<NULL>" for the null SID.
  std::string toMSString() const;

  // Each of the following throws BadDataException "SID is Null" on the null SID.

  /// The binary form.
  const std::string& checkedBytes() const;
  /// Three characters for each byte, \ and two lower-case digits.
  std::string toEscapedString() const;
  /// "<SID=", printable() of the binary form, ">": hexadecimal digits, unless all bytes are printable.
  std::string toDN() const;
  /// 0 if there is no such sub-authority.
  unsigned int getSubAuthority(unsigned int index) const;
  /// Extends the SID if necessary. Sets the count to `index` + 1 if `index` is at or after the last
  /// sub-authority.
  /// @throws BaseException an index above 4
  void setSubAuthority(unsigned int index, unsigned int value);
  /// The sub-authority that identifies an object within its domain; 0 in a domain's own SID.
  unsigned int getObjectRid() const { return getSubAuthority(WELL_KNOWN_RID::OBJECT_INDEX); }
  void setObjectRid(unsigned int rid) { setSubAuthority(WELL_KNOWN_RID::OBJECT_INDEX, rid); }
  /// The SID of the domain that issued this one; a null SID if no domain did.
  SID domainSID() const;

  /// Whether the text form begins as those of domains and their objects.
  bool isDomainSID() const;
  /// Whether the text form begins with S-1-5-32 or S-1-5-5, or is one of WELL_KNOWN_SID::LIST.
  bool isBuiltinGroupSID() const;

  /// The binary form; empty for the null SID.
  const std::string& bytes() const { return m_bytes; }

  bool operator==(const SID& other) const { return m_bytes == other.m_bytes; }
  bool operator!=(const SID& other) const { return m_bytes != other.m_bytes; }
  /// By bytes; for the keys of maps.
  bool operator<(const SID& other) const { return m_bytes < other.m_bytes; }

 private:
  void read(const std::string& text);
  unsigned int count() const;
  unsigned int subAuthority(unsigned int index) const;
  unsigned char byteAt(size_t offset) const;

  std::string m_bytes;
};

/// A shared null SID.
FOKRAZO_API extern const SID NULL_SID;

}  // namespace vesk

/// Reads an unsigned number as strtoul does, and moves the cursor past it and past one "-" or backslash after
/// it. Returns 0 without moving if there are no digits, and the largest unsigned number if it does not fit.
FOKRAZO_API unsigned int NextNumber(const char** cursor, int base);

namespace vesk {
using ::NextNumber;
}  // namespace vesk
