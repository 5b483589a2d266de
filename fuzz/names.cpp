// DNs, SIDs and GUIDs: any text is parsed or refused, and the library reads back what it writes.

#include <cctype>
#include <stdexcept>

#include <fokrazo/dn.h>
#include <fokrazo/error_util.h>
#include <fokrazo/guid.h>
#include <fokrazo/oid.h>
#include <fokrazo/sid.h>
#include <fokrazo/strutil.h>
#include "fuzz/fuzz_input.h"

using namespace vesk;

namespace {

// Runs a call that may refuse its argument.
template <class Call>
void refusing(Call call) {
  try {
    call();
  } catch (const VESKException&) {
  } catch (const std::out_of_range&) {  // operations that cut at fixed positions
  }
}

struct Dialect {
  std::string (*escape)(const std::string&);
  std::string (*unescape)(const std::string&);
};
constexpr Dialect kDialects[] = {
    {DN::escapeDNString, DN::unescapeDNString},
    {DN::escapeLDAPString, DN::unescapeLDAPString},
    {DN::escapeCanonicalString, DN::unescapeCanonicalString},
};

void tryEscapes(const std::string& text) {
  for (const Dialect& dialect : kDialects) {
    FUZZ_CHECK(dialect.unescape(dialect.escape(text)) == text);
    refusing([&] { dialect.unescape(text); });
  }
  const std::string filter = DN::escapeLDAPFilter(text);
  FUZZ_CHECK(DN::unescape(filter, "*()\\" + std::string(1, '\0')) == text);
}

void tryDN(const std::string& text) {
  refusing([&] { DN::guidFromDN(text); });
  refusing([&] { DN::dnFromExtendedDN(text); });
  refusing([&] { DN::domainFromDN(text); });
  refusing([&] { DN::canonicalFromDN(text); });
  refusing([&] { DN::cnFromDn(text); });
  refusing([&] { DN::parent(text); });
  refusing([&] { DN::renameDN(text, "name"); });
  refusing([&] { DN::isFakeObjDN(text); });
  DN::dnFromDomain(text);
  DN::isDN(text);
  for (unsigned int position = 0; position <= text.size() + 1; ++position) DN::isEscaped(text, position);
}

// Puts any text into a DN as its first value.
void tryValue(const std::string& text) {
  const std::string value = DN::escapeDNString(text);
  const std::string parent = "OU=Sales,DC=example,DC=com";
  const std::string dn = "CN=" + value + "," + parent;
  FUZZ_CHECK(DN::cnFromDn(dn) == value);
  FUZZ_CHECK(DN::parent(dn) == parent);
  FUZZ_CHECK(DN::dnFromExtendedDN(DN::extendedDN(Guid(), SID("S-1-5-21-1-2-3-4"), dn)) == dn);
}

void trySid(const std::string& text) {
  const SID read(text);
  SID sid;
  refusing([&] { sid.fromMSString(text); });
  refusing([&] { sid.fromB64String(text); });
  refusing([&] { sid.fromEscapedString(text); });
  refusing([&] { sid.fromExtendedDN(text); });
  refusing([&] { sid.setSubAuthority(read.getSubAuthority(0) % 6, 7); });
  const char* cursor = text.c_str();
  NextNumber(&cursor, 10);
  FUZZ_CHECK(cursor <= text.c_str() + text.size());

  SID any;
  any.init(reinterpret_cast<const unsigned char*>(text.data()), text.size());
  any.isDomainSID();
  any.isBuiltinGroupSID();
  if (any.isNull()) return;
  any.domainSID();
  for (unsigned int i : {0U, 4U, 14U, 254U, 255U}) any.getSubAuthority(i);
  SID again;
  again.fromEscapedString(any.toEscapedString());
  FUZZ_CHECK(again == any);
  again.fromExtendedDN(any.toDN());
  FUZZ_CHECK(again == any || any.bytes()[0] != 1);  // printable bytes appear in the text unchanged
}

// A SID made of numbers has these numbers in its text.
void trySidOfNumbers(const std::string& text) {
  const size_t count = std::min<size_t>(text.size() / 4, SID::kMaxSubAuthorities);
  if (count == 0) return;
  std::string written = "S-1-5";
  for (size_t i = 0; i < count; ++i) {
    uint32_t number = 0;
    for (size_t j = 0; j < 4; ++j) number = number << 8 | static_cast<unsigned char>(text[4 * i + j]);
    written += "-" + std::to_string(number);
  }
  const SID sid(written);
  FUZZ_CHECK(sid.toMSString() == written);
  SID again;
  again.init(reinterpret_cast<const unsigned char*>(sid.bytes().data()), sid.bytes().size());
  FUZZ_CHECK(again.toMSString() == written);
}

void tryGuid(const std::string& text) {
  Guid read;
  read.fromString(text);
  read.fromRealMSString(text);
  read.fromHexValue(text);
  refusing([&] { read.fromExtendedDN(text); });
  Guid::isValidGuidStringFormat(text.c_str());
  Guid::swapBytesMSGuid(text);

  const Guid guid(reinterpret_cast<const unsigned char*>(text.data()), text.size());
  Guid again;
  again.fromString(guid.toString());
  FUZZ_CHECK(again == guid);
  again.fromString(guid.toMSString());
  FUZZ_CHECK(again == guid);
  again.fromRealMSString(guid.toRealMSString());
  FUZZ_CHECK(again == guid);
  again.fromExtendedDN(guid.toDN());
  FUZZ_CHECK(again == guid);
  FUZZ_CHECK(Guid::isValidGuidStringFormat(guid.toRealMSString().c_str()));
  FUZZ_CHECK(Guid::swapBytesMSGuid(guid.toMSString()) == guid.toRealMSString());
  FUZZ_CHECK(Guid::swapBytesMSGuid(guid.toRealMSString()) == guid.toMSString());
  GuidList(reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  tryEscapes(text);
  tryDN(text);
  tryValue(text);
  trySid(text);
  trySidOfNumbers(text);
  tryGuid(text);
  return 0;
}
