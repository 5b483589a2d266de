/// Distinguished names (RFC 4514) in plain strings: splitting, escaping, and conversion to and from the names
/// of domains and the canonical names of a directory.
#pragma once

#include <string>

#include <fokrazo/export.h>

/// Markers in names that the daemon makes up for users across a one-way trust and for private groups.
FOKRAZO_API extern const std::string VESK_CN_FOREIGN_USER;
FOKRAZO_API extern const std::string PRIVATE_GROUP_CN;

namespace vesk {

class Guid;
class SID;

/// Operations on names held in strings:
///   DN              CN=Joe,OU=Sales,DC=example,DC=com, keywords in any case
///   extended DN     <GUID=…>;<SID=…>;DN; the SID part is optional
///   canonical name  example.com/Sales/Joe
///   domain          example.com
/// None of them checks a name as a whole. Operations that cut at fixed positions throw std::out_of_range if
/// the string is too short. Thread-safety: pure functions.
class FOKRAZO_API DN {
 public:
  /// Whether "DC=" occurs, in any case.
  static bool isDN(const std::string& text);
  /// Whether an odd number of backslashes directly precedes `position`. The first byte is not counted, so
  /// position 1 is never escaped.
  static bool isEscaped(const std::string& text, unsigned int position);
  /// Whether the daemon made the name up for an object without a directory entry. Both functions are the
  /// same.
  static bool isFakeObjDN(const std::string& dn);
  static bool isFakeUserDN(const std::string& dn);

  /// The 32 digits of an extended DN's GUID; empty for other text.
  static std::string guidFromDN(const std::string& text);
  /// The DN of an extended DN; any other text unchanged.
  static std::string dnFromExtendedDN(const std::string& text);
  /// "<GUID=…>;<SID=…>;" and the DN, without the middle part for a null SID. An extended DN stays as it is.
  static std::string extendedDN(const Guid& guid, const SID& sid, const std::string& dn);

  /// The DN of a domain: a DC= part for each of its labels.
  static std::string dnFromDomain(const std::string& domain);
  /// The domain of a DN or of a canonical name, in upper case. @throws BadDataException neither
  static std::string domainFromDN(const std::string& dn);
  /// The canonical name: the domain in lower case, then the values of all OU= and then of all CN= parts, leaf
  /// last. @throws BadDataException a part is empty or not followed by a comma, or there is no domain
  static std::string canonicalFromDN(const std::string& dn);

  /// The DN without its first part; all of it if it has only one.
  static std::string parent(const std::string& dn);
  /// The value of the first part, which is taken for a CN=, still escaped.
  static std::string cnFromDn(const std::string& dn);
  /// "CN=", `name`, and the rest of `dn` from its second "CN=" on; case-sensitive.
  static std::string renameDN(const std::string& dn, const std::string& name);

  /// Puts a backslash before each byte of `backslashed`, and turns each other byte of `hexed`, with
  /// `checkPrintable` also each unprintable one, into a backslash and two upper-case digits.
  static std::string escape(const std::string& text, const std::string& backslashed, const std::string& hexed,
                            bool checkPrintable);
  /// Undoes escape: a backslash may precede a byte of `backslashed` or two digits.
  /// @throws BadDataException it precedes anything else
  static std::string unescape(const std::string& text, const std::string& backslashed);

  /// Values in LDAP text; unprintable bytes are escaped too.
  static std::string escapeLDAPString(const std::string& text);
  static std::string unescapeLDAPString(const std::string& text);
  /// Values in LDAP filters: a backslash before each of RFC 4515's characters.
  static std::string escapeLDAPFilter(const std::string& text);
  /// Parts of canonical names.
  static std::string escapeCanonicalString(const std::string& text);
  static std::string unescapeCanonicalString(const std::string& text);
  /// Values in DNs; blanks are escaped at both ends only.
  static std::string escapeDNString(const std::string& text);
  static std::string unescapeDNString(const std::string& text);

  // The characters that each of these forms escapes, with a backslash or in hexadecimal. Built when the
  // library is loaded: other code that runs then must use neither them nor the functions above.
  static const std::string dn_bs_escaped_chars_always;
  static const std::string dn_bs_escaped_chars;
  static const std::string dn_hex_escaped_chars;
  static const std::string canonical_bs_escaped_chars;
  static const std::string canonical_hex_escaped_chars;
  static const std::string ldap_bs_escaped_chars;
  static const std::string ldap_hex_escaped_chars;
};

}  // namespace vesk
