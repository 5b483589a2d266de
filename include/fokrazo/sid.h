/// Windows security identifiers.
#pragma once

#include <cstddef>
#include <string>

#include <fokrazo/export.h>
#include <fokrazo/well_known_sid.h>

namespace vesk {

/// A security identifier, held in the binary form of the Windows security model and converted to and from its
/// other spellings on demand:
///   text         S-1-5-21-1-2-3-1104
///   base 64      AQUAAAAAAAUVAAAA…
///   escaped      \01\05\00…, for LDAP filters
///   extended DN  <SID=0105…>, perhaps with other text around it
///   binary       revision, count, authority (6 bytes, big-endian), `count` little-endian 32-bit numbers
/// Authorities above 255 are not represented: of the authority only the last byte is read and printed.
/// The binary form may come from anywhere and be shorter than its count says; nothing is read past its end,
/// and what is missing counts as zero.
/// Thread-safety: a plain value.
class FOKRAZO_API SID {
 public:
  /// The most sub-authorities that this class parses and sets.
  static constexpr unsigned int kMaxSubAuthorities = 5;

  /// The null SID.
  SID() = default;
  /// Reads any spelling. Never throws for bad text: the SID is then null, and a line is logged.
  explicit SID(const std::string& text);
  /// As of plain values.
  SID(const SID&) = default;
  SID(SID&&) noexcept = default;
  SID& operator=(const SID&) = default;
  SID& operator=(SID&&) noexcept = default;
  virtual ~SID();

  /// Takes the binary form, 8 + 4 x count bytes, from memory that the caller knows to hold them; null makes
  /// the null SID.
  void init(const unsigned char* bytes);
  /// As above for bytes from outside, of which there are `available`: missing ones become zero. Null or no
  /// bytes make the null SID.
  void init(const unsigned char* bytes, size_t available);
  /// The null SID has no bytes.
  void setNull() { m_bytes.clear(); }
  bool isNull() const { return m_bytes.empty(); }

  // Each of these replaces the SID by one that is read from text of one spelling. On failure they throw
  // BaseException with code 1004; the SID is then null.

  /// An empty text makes the null SID. A text without sub-authorities gets one, of value 0.
  void fromMSString(const std::string& text);
  /// The text ends with two padding characters, and stands for at most 1024 bytes.
  void fromB64String(const std::string& text);
  /// The text is that of an LDAP filter: a backslash and two digits for each byte.
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
  /// "<SID=", printable() of the binary form, ">": its digits, unless all of its bytes are printable text.
  std::string toDN() const;
  /// 0 if there is no such sub-authority.
  unsigned int getSubAuthority(unsigned int index) const;
  /// Extends the SID if necessary. Setting the last sub-authority, or one after it, makes that the last.
  /// @throws BaseException an index above 4.
  void setSubAuthority(unsigned int index, unsigned int value);
  /// The sub-authority that identifies an object within its domain; 0 in a domain's own SID.
  unsigned int getObjectRid() const { return getSubAuthority(WELL_KNOWN_RID::OBJECT_INDEX); }
  void setObjectRid(unsigned int rid) { setSubAuthority(WELL_KNOWN_RID::OBJECT_INDEX, rid); }
  /// The SID of the domain that issued this one; a null SID if it was no domain.
  SID domainSID() const;

  /// Whether the text form begins as those of domains and their objects do.
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
