#include <fokrazo/dn.h>

#include <algorithm>
#include <bitset>
#include <string_view>
#include <vector>

#include <fokrazo/ascii.h>
#include <fokrazo/error_util.h>
#include <fokrazo/guid.h>
#include <fokrazo/sid.h>
#include <fokrazo/strutil.h>
#include "util/error/throw.h"
#include "util/text/ends_escaped.h"
#include "util/text/hex_digits.h"

namespace vesk {

namespace {

constexpr char kSource[] = "base/dn";
constexpr char kDomainPart[] = "DC=";
constexpr char kNextDomainPart[] = ",DC=";
constexpr char kNamePart[] = "CN=";
constexpr char kUnitPart[] = "OU=";
constexpr size_t kKeywordSize = 3;  // CN=, OU=, DC=
constexpr size_t kUsualDepth = 8;
constexpr char kEndOfExtension[] = ">;";

class ByteSet {
 public:
  explicit ByteSet(const std::string& bytes) {
    for (unsigned char byte : bytes) m_bits.set(byte);
  }
  bool has(unsigned char byte) const { return m_bits.test(byte); }

 private:
  std::bitset<256> m_bits;
};

bool isExtended(const std::string& text) {
  return !text.empty() && text[0] == '<' && text.find(';') != text.npos;
}

std::string replaceAll(std::string_view text, std::string_view from, std::string_view to) {
  std::string result;
  result.reserve(text.size());
  size_t start = 0;
  for (size_t found; (found = text.find(from, start)) != text.npos; start = found + from.size())
    result.append(text, start, found - start).append(to);
  return result.append(text, start);
}

// The first comma at or after `from` that no backslash escapes; npos if there is none.
size_t endOfPart(const std::string& dn, size_t from) {
  size_t comma = dn.find(',', from);
  while (comma != dn.npos && endsEscaped(std::string_view(dn).substr(0, comma)))
    comma = dn.find(',', comma + 1);
  return comma;
}

// As endOfPart for canonical names, whose first byte is never an escape.
size_t endOfValue(const std::string& upperDn, size_t start) {
  size_t comma = upperDn.find(',', start);
  while (comma != upperDn.npos && DN::isEscaped(upperDn, static_cast<unsigned int>(comma)))
    comma = upperDn.find(',', comma + 1);
  if (comma == upperDn.npos || comma == start)
    FOKRAZO_THROW(BadDataException, "BadDataException", 0, "bad dn format %s", upperDn.c_str());
  return comma;
}

// The domain name in a DN. `upperDn` is `dn` in upper case.
std::string domainIn(const std::string& upperDn, const std::string& dn) {
  const size_t domain = upperDn.find(kDomainPart);
  if (domain != upperDn.npos)
    return replaceAll(std::string_view(upperDn).substr(domain + kKeywordSize), kNextDomainPart, ".");
  const size_t slash = upperDn.find('/');
  if (slash == upperDn.npos)
    FOKRAZO_THROW(BadDataException, "BadDataException", 0, "Malformed DN \"%s\", missing DC= or /",
                  dn.c_str());
  return upperDn.substr(0, slash);
}

// Appends a DN's value, escaped for a canonical name; most values need no escapes.
void appendCanonical(std::string& text, std::string_view value) {
  if (value.find_first_of("\\/") == value.npos)
    text.append(value);
  else
    text.append(DN::escapeCanonicalString(DN::unescapeDNString(std::string(value))));
}

bool isHexPair(const std::string& text, size_t at) {
  return at + 1 < text.size() && IsXdigitChar(static_cast<unsigned char>(text[at])) &&
         IsXdigitChar(static_cast<unsigned char>(text[at + 1]));
}

std::string escapeEdgeBlanks(const std::string& text) {
  const size_t first = std::min(text.find_first_not_of(' '), text.size());
  const size_t end = std::max(text.find_last_not_of(' ') + 1, first);
  if (first == 0 && end == text.size()) return text;
  std::string result;
  for (size_t i = 0; i < text.size(); ++i) {
    if (i < first || i >= end) result += '\\';
    result += text[i];
  }
  return result;
}

}  // namespace

bool DN::isDN(const std::string& text) {
  return upper(text).find(kDomainPart) != std::string::npos;
}

bool DN::isEscaped(const std::string& text, unsigned int position) {
  const size_t end = std::min<size_t>(position, text.size());
  size_t first = end;
  while (first > 1 && text[first - 1] == '\\') --first;
  return (end - first) % 2 != 0;
}

bool DN::isFakeObjDN(const std::string& dn) {
  return dn.find(VESK_CN_FOREIGN_USER) != dn.npos || dn.find(PRIVATE_GROUP_CN) != dn.npos;
}

bool DN::isFakeUserDN(const std::string& dn) {
  return isFakeObjDN(dn);
}

std::string DN::guidFromDN(const std::string& text) {
  return isExtended(text) ? text.substr(6, 32) : std::string();
}

std::string DN::dnFromExtendedDN(const std::string& text) {
  const size_t end = text.rfind(kEndOfExtension);
  return end == text.npos ? text : text.substr(end + sizeof kEndOfExtension - 1);
}

std::string DN::extendedDN(const Guid& guid, const SID& sid, const std::string& dn) {
  if (isExtended(dn)) return dn;
  std::string extended = guid.toDN() + ";";
  if (!sid.isNull()) extended += sid.toDN() + ";";
  return extended + dn;
}

std::string DN::dnFromDomain(const std::string& domain) {
  return kDomainPart + replaceAll(domain, ".", kNextDomainPart);
}

std::string DN::domainFromDN(const std::string& dn) {
  return domainIn(upper(dn), dn);
}

std::string DN::canonicalFromDN(const std::string& dn) {
  const std::string upperDn = upper(dn);
  std::string values;  // concatenated, leaf first
  values.reserve(dn.size());
  std::vector<size_t> starts;
  starts.reserve(kUsualDepth);
  size_t position = 0;
  for (const char* keyword : {kNamePart, kUnitPart}) {
    for (size_t part; (part = upperDn.find(keyword, position)) != upperDn.npos;) {
      const size_t start = part + kKeywordSize;
      position = endOfValue(upperDn, start);
      starts.push_back(values.size());
      appendCanonical(values, std::string_view(dn).substr(start, position - start));
    }
  }
  std::string canonical = lower(domainIn(upperDn, dn));
  canonical.reserve(canonical.size() + values.size() + starts.size());
  size_t end = values.size();
  for (auto start = starts.rbegin(); start != starts.rend(); end = *start++)
    canonical.append("/").append(values, *start, end - *start);
  return canonical;
}

std::string DN::parent(const std::string& dn) {
  const size_t comma = endOfPart(dn, 0);
  return comma == dn.npos ? dn : dn.substr(comma + 1);
}

std::string DN::cnFromDn(const std::string& dn) {
  const size_t comma = endOfPart(dn, kKeywordSize);
  return dn.substr(kKeywordSize, comma == dn.npos ? comma : comma - kKeywordSize);
}

std::string DN::renameDN(const std::string& dn, const std::string& name) {
  return kNamePart + name + "," + dn.substr(dn.find(kNamePart, kKeywordSize));
}

std::string DN::escape(const std::string& text, const std::string& backslashed, const std::string& hexed,
                       bool checkPrintable) {
  if (!checkPrintable && text.find_first_of(backslashed) == text.npos &&
      text.find_first_of(hexed) == text.npos)
    return text;
  const ByteSet backslashSet(backslashed);
  const ByteSet hexSet(hexed);
  std::string result;
  result.reserve(text.size() + text.size() / 2);
  for (unsigned char byte : text) {
    if (backslashSet.has(byte)) {
      result += '\\';
      result += static_cast<char>(byte);
    } else if ((checkPrintable && !isAsciiPrintable(static_cast<char>(byte))) || hexSet.has(byte)) {
      char escaped[3];
      putEscapedHex(escaped, byte, kUpperDigits);
      result.append(escaped, sizeof escaped);
    } else {
      result += static_cast<char>(byte);
    }
  }
  return result;
}

std::string DN::unescape(const std::string& text, const std::string& backslashed) {
  if (text.find('\\') == text.npos) return text;
  std::string result;
  result.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\') {
      result += text[i];
    } else if (i + 1 < text.size() && backslashed.find(text[i + 1]) != backslashed.npos) {
      result += text[++i];
    } else if (isHexPair(text, i + 1)) {
      result += static_cast<char>(HexToUint8(text[i + 1]) << 4 | HexToUint8(text[i + 2]));
      i += 2;
    } else {
      FOKRAZO_THROW(BadDataException, "BadDataException", 0, "Invalid escape sequence %s", text.c_str());
    }
  }
  return result;
}

std::string DN::escapeLDAPString(const std::string& text) {
  return escape(text, ldap_bs_escaped_chars, ldap_hex_escaped_chars, true);
}

std::string DN::unescapeLDAPString(const std::string& text) {
  return unescape(text, ldap_bs_escaped_chars);
}

std::string DN::escapeLDAPFilter(const std::string& text) {
  return escape(text, ldap_bs_escaped_chars, std::string(), false);
}

std::string DN::escapeCanonicalString(const std::string& text) {
  return escape(text, canonical_bs_escaped_chars, canonical_hex_escaped_chars, false);
}

std::string DN::unescapeCanonicalString(const std::string& text) {
  return unescape(text, canonical_bs_escaped_chars);
}

std::string DN::escapeDNString(const std::string& text) {
  return escapeEdgeBlanks(escape(text, dn_bs_escaped_chars_always, dn_hex_escaped_chars, false));
}

std::string DN::unescapeDNString(const std::string& text) {
  return unescape(text, dn_bs_escaped_chars);
}

}  // namespace vesk
