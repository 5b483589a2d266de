#include <fokrazo/sid.h>

#include <algorithm>
#include <charconv>
#include <climits>

#include <fokrazo/byteorder.h>
#include <fokrazo/error_util.h>
#include <fokrazo/log.h>
#include <fokrazo/strutil.h>
#include "util/error/throw.h"
#include "util/text/base64.h"
#include "util/text/hex_digits.h"
#include "util/text/strtou32.h"

namespace vesk {

namespace {

constexpr char kSource[] = "util/sid";
constexpr char kLogger[] = "util.sid";
constexpr int kBadData = 1004;

// The binary form.
constexpr size_t kCountOffset = 1;
constexpr size_t kAuthorityOffset = 7;
constexpr size_t kHeaderSize = 8;
constexpr size_t kSubAuthoritySize = 4;

constexpr unsigned char kRevision = 1;
constexpr unsigned char kFakeRevision = 99;  // FAKE_SID_REVISION as a number
constexpr unsigned char kNtAuthority = 5;
constexpr unsigned char kNonUnique = 21;  // the first sub-authority of domains and their objects
constexpr unsigned int kDomainCount = 4;

constexpr char kTextPrefix[] = "S-";
constexpr char kExtendedPrefix[] = "<SID=";
constexpr size_t kExtendedPrefixSize = sizeof kExtendedPrefix - 1;

constexpr size_t sizeFor(unsigned int count) {
  return kHeaderSize + kSubAuthoritySize * count;
}

bool beginsWith(const std::string& text, const char* prefix) {
  return text.rfind(prefix, 0) == 0;
}

constexpr size_t kLongestNumber = sizeof "-4294967295" - 1;

char* putNumber(char* out, unsigned int number) {
  *out = '-';
  return std::to_chars(out + 1, out + kLongestNumber, number).ptr;
}

}  // namespace

const SID NULL_SID;

SID::SID(const std::string& text) {
  try {
    read(text);
  } catch (const BaseException& error) {
    VESK_LOG_TO(kLogger, Debug, "SID(): Invalid SID string: %s %s", text.c_str(), error.what());
    setNull();
  }
}

SID::~SID() = default;

void SID::read(const std::string& text) {
  if (text.empty()) return;
  if (beginsWith(text, kTextPrefix)) return fromMSString(text);
  if (text.find(kExtendedPrefix) != text.npos) return fromExtendedDN(text);
  switch (text[0]) {
    case '\\':
      return fromEscapedString(text);
    case 'A':
      return fromB64String(text);
    case kRevision:
      return init(reinterpret_cast<const unsigned char*>(text.data()), text.size());
    default:
      // An extended DN may have no SID: not worth a log line.
      if (text.find("<GUID=") == text.npos) VESK_LOG_TO(kLogger, Error, "Bad SID string: %s", text.c_str());
  }
}

void SID::init(const unsigned char* bytes) {
  init(bytes, bytes ? sizeFor(bytes[kCountOffset]) : 0);
}

void SID::init(const unsigned char* bytes, size_t available) {
  if (!bytes || available == 0) return setNull();
  const size_t size = sizeFor(available > kCountOffset ? bytes[kCountOffset] : 0);
  m_bytes.assign(reinterpret_cast<const char*>(bytes), std::min(size, available));
  m_bytes.resize(size);
}

void SID::fromMSString(const std::string& text) {
  VESK_LOG_TO(kLogger, Trace, "SID::fromMSString - %s", text.c_str());
  setNull();
  if (text.empty()) {
    VESK_LOG_TO(kLogger, Warn, "Empty sid string supplied for MS style SID string");
    return;
  }
  if (text.size() < 5)
    FOKRAZO_THROW(BaseException, "BaseException", kBadData, "Sid too short: (%ld) %s",
                  static_cast<long>(text.size()), text.c_str());
  if (!beginsWith(text, kTextPrefix))
    FOKRAZO_THROW(BaseException, "BaseException", kBadData, "Bad SID prefix: %s", text.c_str());

  const char* cursor = text.c_str() + sizeof kTextPrefix - 1;
  const auto revision = static_cast<unsigned char>(NextNumber(&cursor, 10));
  if (revision != kRevision && revision != kFakeRevision)
    FOKRAZO_THROW(BaseException, "BaseException", kBadData, "Unknown SID revision: %s", text.c_str());
  const auto authority = static_cast<unsigned char>(NextNumber(&cursor, 10));

  const auto count = 1 + std::count(cursor, text.c_str() + text.size(), '-');
  if (count > kMaxSubAuthorities)
    FOKRAZO_THROW(BaseException, "BaseException", kBadData, "Too many SID sub-authorities: %s", text.c_str());

  m_bytes.resize(sizeFor(static_cast<unsigned int>(count)));
  m_bytes[0] = static_cast<char>(revision);
  m_bytes[kCountOffset] = static_cast<char>(count);
  m_bytes[kAuthorityOffset] = static_cast<char>(authority);
  for (size_t offset = kHeaderSize; offset < m_bytes.size(); offset += kSubAuthoritySize)
    PutLoHi32(&m_bytes[offset], NextNumber(&cursor, 10));
}

void SID::fromB64String(const std::string& text) {
  VESK_LOG_TO(kLogger, Trace, "SID::fromB54String - %s", text.c_str());
  setNull();
  if (text.empty() || text[0] != 'A' || text.find("==") == text.npos)
    FOKRAZO_THROW(BaseException, "BaseException", kBadData,
                  "Base 64 SID must start with a 'A' and end with '=='");
  unsigned char bytes[1024];
  const ssize_t length = decodeBase64(text, bytes, sizeof bytes);
  if (length < 0) FOKRAZO_THROW(BaseException, "BaseException", kBadData, "Base 64 conversion failed");
  init(bytes, static_cast<size_t>(length));
}

void SID::fromEscapedString(const std::string& text) {
  VESK_LOG_TO(kLogger, Trace, "SID::fromEscString - %s", text.c_str());
  setNull();
  if (text.empty() || text[0] != '\\')
    FOKRAZO_THROW(BaseException, "BaseException", kBadData, "Escape SID must start with a '\\' ");
  if (text.size() % 3 != 0)
    FOKRAZO_THROW(BaseException, "BaseException", kBadData,
                  "Escape SID length must be a factor of three: (length=%ld)",
                  static_cast<long>(text.size()));

  unsigned char bytes[sizeFor(255)] = {};
  const size_t length = std::min(text.size() / 3, sizeof bytes);
  const char* cursor = text.c_str() + 1;
  for (size_t i = 0; i < length; ++i) {
    const char* before = cursor;
    bytes[i] = static_cast<unsigned char>(NextNumber(&cursor, 16));
    if (cursor == before) break;  // no number: nothing more to read
  }
  init(bytes, length);
}

void SID::fromExtendedDN(const std::string& text) {
  setNull();
  const size_t begin = text.find(kExtendedPrefix);
  const size_t end = begin == text.npos ? begin : text.find('>', begin);
  if (end == text.npos)
    FOKRAZO_THROW(BaseException, "BaseException", kBadData, "SID: Bad extended DN: %s", text.c_str());
  const size_t first = begin + kExtendedPrefixSize;
  const std::string digits = text.substr(first, end - first);
  m_bytes.resize(digits.size() / 2);
  HexToUint8Array(digits, reinterpret_cast<unsigned char*>(m_bytes.data()), m_bytes.size(), false);
}

std::string SID::toMSString() const {
  if (isNull()) return "<NULL>";
  char text[1 + kLongestNumber * (2 + UCHAR_MAX)];
  char* end = text;
  *end++ = 'S';
  end = putNumber(end, byteAt(0));
  end = putNumber(end, byteAt(kAuthorityOffset));
  for (unsigned int i = 0; i < count(); ++i) end = putNumber(end, subAuthority(i));
  return {text, end};
}

const std::string& SID::checkedBytes() const {
  if (isNull()) FOKRAZO_THROW(BadDataException, "BadDataException", 0, "SID is Null");
  return m_bytes;
}

std::string SID::toEscapedString() const {
  std::string text(3 * checkedBytes().size(), '\0');
  char* out = text.data();
  for (unsigned char byte : m_bytes) out = putEscapedHex(out, byte);
  return text;
}

std::string SID::toDN() const {
  return kExtendedPrefix + printable(checkedBytes()) + ">";
}

unsigned int SID::getSubAuthority(unsigned int index) const {
  checkedBytes();
  if (index >= count()) return 0;
  return subAuthority(index);
}

// Missing bytes count as 0.
unsigned int SID::subAuthority(unsigned int index) const {
  const size_t begin = sizeFor(index);
  if (begin + kSubAuthoritySize <= m_bytes.size()) return GetLoHi32(&m_bytes[begin]);
  unsigned char bytes[kSubAuthoritySize] = {};
  for (size_t i = 0; i < sizeof bytes; ++i) bytes[i] = byteAt(begin + i);
  return GetLoHi32(bytes);
}

void SID::setSubAuthority(unsigned int index, unsigned int value) {
  checkedBytes();
  if (index >= kMaxSubAuthorities)
    FOKRAZO_THROW(BaseException, "BaseException", kBadData, "setSubAuthority index must be less than %u",
                  kMaxSubAuthorities);
  const size_t end = sizeFor(index + 1);
  const bool last = index + 1 >= count();
  if (last || m_bytes.size() < end) m_bytes.resize(end);
  if (last) m_bytes[kCountOffset] = static_cast<char>(index + 1);
  PutLoHi32(&m_bytes[sizeFor(index)], value);
}

SID SID::domainSID() const {
  checkedBytes();
  SID domain;
  if (byteAt(0) != kRevision || byteAt(kAuthorityOffset) != kNtAuthority ||
      byteAt(kHeaderSize) != kNonUnique || count() < kDomainCount)
    return domain;
  domain = *this;
  domain.m_bytes[kCountOffset] = kDomainCount;
  domain.m_bytes.resize(sizeFor(kDomainCount));
  VESK_LOG_TO(kLogger, Trace, "Domain SID of %s is %s", toMSString().c_str(), domain.toMSString().c_str());
  return domain;
}

bool SID::isDomainSID() const {
  return beginsWith(toMSString(), WELL_KNOWN_SID::DOMAIN_PREFIX);
}

bool SID::isBuiltinGroupSID() const {
  const std::string text = toMSString();
  return beginsWith(text, WELL_KNOWN_SID::BUILTIN_GROUP_PREFIX) ||
         beginsWith(text, WELL_KNOWN_SID::LOGON_SESSION_PREFIX) ||
         std::find(std::begin(WELL_KNOWN_SID::LIST), std::end(WELL_KNOWN_SID::LIST), text) !=
             std::end(WELL_KNOWN_SID::LIST);
}

unsigned int SID::count() const {
  return byteAt(kCountOffset);
}

unsigned char SID::byteAt(size_t offset) const {
  return offset < m_bytes.size() ? static_cast<unsigned char>(m_bytes[offset]) : 0;
}

}  // namespace vesk

unsigned int NextNumber(const char** cursor, int base) {
  char* end;
  const unsigned int number = vesk::strtou32(*cursor, &end, base);
  if (end == *cursor) return 0;
  if (*end == '-' || *end == '\\') ++end;
  *cursor = end;
  return number;
}
