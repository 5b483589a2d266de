// Conversions of values, without the daemon: sid, guid, dn.

#include <algorithm>
#include <stdexcept>

#include <fokrazo/ascii.h>
#include <fokrazo/dn.h>
#include <fokrazo/error_util.h>
#include <fokrazo/guid.h>
#include <fokrazo/sid.h>
#include <fokrazo/strutil.h>
#include "cli/command.h"
#include "cli/sid_text.h"

namespace cli {

namespace {

using namespace vesk;

SID readSid(const std::string& text) {
  if (startsWith(text, "S-", false, false)) return readSidText(text);
  const bool isExtended = text.find("<SID=") != std::string::npos;
  SID sid;
  try {
    if (isExtended)
      sid.fromExtendedDN(text);
    else if (text.compare(0, 1, "\\") == 0)
      sid.fromEscapedString(text);
    else
      sid.fromB64String(text);
  } catch (const VESKException& error) {
    throw UsageError("'" + text + "' is not a SID: " + error.what());
  }
  if (isExtended && lower(text).find(lower(sid.toDN())) == std::string::npos)
    throw UsageError("'" + text + "' is not a SID: it would be read as " + sid.toMSString());
  if (sid.isNull()) throw UsageError("'" + text + "' is not a SID: it has no digits");
  return sid;
}

ExitStatus sid(Invocation& invocation) {
  const std::string text = invocation.arguments.operand("a SID");
  invocation.arguments.done();
  SID sid = readSid(text);
  Record record;
  record.text("text", sid.toMSString()).text("escaped", sid.toEscapedString()).text("extendedDN", sid.toDN());
  const SID domain = sid.domainSID();
  if (!domain.isNull()) record.text("domain", domain.toMSString()).number("rid", sid.getObjectRid());
  record.boolean("builtin", sid.isBuiltinGroupSID());
  invocation.output.record(record);
  return kFound;
}

bool isHex(const std::string& text) {
  return std::all_of(text.begin(), text.end(), isAsciiHexDigit);
}

Guid readGuid(const std::string& text, bool stored) {
  Guid guid;
  if (Guid::isValidGuidStringFormat(text.c_str())) {
    if (stored)
      guid.fromString(text);
    else
      guid.fromRealMSString(text);
  } else if (text.size() == 32 && isHex(text)) {
    guid.fromString(text);
  } else {
    try {
      guid.fromExtendedDN(text);
    } catch (const VESKException&) {
      throw UsageError("'" + text + "' is not a GUID");
    }
  }
  return guid;
}

ExitStatus guid(Invocation& invocation) {
  const bool stored = invocation.arguments.flag("--stored");
  const std::string text = invocation.arguments.operand("a GUID");
  invocation.arguments.done();
  const Guid guid = readGuid(text, stored);
  invocation.output.record(Record()
                               .text("text", guid.toRealMSString())
                               .text("stored", guid.toString())
                               .text("storedWithHyphens", guid.toMSString())
                               .text("escaped", guid.toEscapedString())
                               .text("extendedDN", guid.toDN()));
  return kFound;
}

// The operations of `fokrazo dn`.
constexpr struct {
  const char* name;
  std::string (*operation)(const std::string&);
} kDnOperations[] = {
    {"escape", DN::escapeDNString},
    {"unescape", DN::unescapeDNString},
    {"escape-ldap", DN::escapeLDAPString},
    {"unescape-ldap", DN::unescapeLDAPString},
    {"escape-filter", DN::escapeLDAPFilter},
    {"escape-canonical", DN::escapeCanonicalString},
    {"unescape-canonical", DN::unescapeCanonicalString},
    {"canonical", DN::canonicalFromDN},
    {"domain", DN::domainFromDN},
    {"from-domain", DN::dnFromDomain},
    {"parent", DN::parent},
    {"cn", DN::cnFromDn},
    {"plain", DN::dnFromExtendedDN},
    {"guid", DN::guidFromDN},
};

[[noreturn]] void refuseDn(const std::string& text, const std::string& name, const std::string& why) {
  throw UsageError("'" + text + "' is not valid for dn " + name + why);
}

ExitStatus dn(Invocation& invocation) {
  const std::string name = invocation.arguments.operand("an operation");
  const std::string text = invocation.arguments.operand("a text");
  invocation.arguments.done();
  for (const auto& row : kDnOperations) {
    if (name != row.name) continue;
    try {
      const std::string result = row.operation(text);
      invocation.output.record(Record().text(row.name, result), result);
    } catch (const std::out_of_range&) {  // the text ends before a part of the DN
      refuseDn(text, name, "");
    } catch (const std::exception& error) {
      refuseDn(text, name, std::string(": ") + error.what());
    }
    return kFound;
  }
  throw UsageError("unknown operation " + name);
}

const Command kCommands[] = {
    {"sid", "SID", "show a SID in all its forms",
     "Reads S-…, base 64, bytes with backslashes (\\01\\05…), and <SID=…>.\n", sid},
    {"guid", "[--stored] GUID", "show a GUID in all its forms",
     "Reads the text form, 32 digits in stored order, and <GUID=…>.\n"
     "  --stored       the bytes of the text form are in stored order, too\n",
     guid},
    {"dn", "OPERATION TEXT", "convert a distinguished name",
     "Operations: escape, unescape, escape-ldap, unescape-ldap, escape-filter,\n"
     "escape-canonical, unescape-canonical, canonical, domain, from-domain, parent, cn,\n"
     "plain (without GUID and SID), guid.\n",
     dn},
};

}  // namespace

Family valueCommands() {
  return {"Convert values", kCommands, sizeof kCommands / sizeof *kCommands};
}

}  // namespace cli
