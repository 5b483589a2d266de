// Conversions of values, without the daemon: sid, guid, dn.

#include <algorithm>
#include <optional>
#include <stdexcept>

#include <fokrazo/ascii.h>
#include <fokrazo/dn.h>
#include <fokrazo/error_util.h>
#include <fokrazo/guid.h>
#include <fokrazo/sid.h>
#include <fokrazo/strutil.h>
#include "cli/base64.h"
#include "cli/command.h"
#include "cli/sid_text.h"

namespace cli {

namespace {

using namespace vesk;

[[noreturn]] void refuseSid(const std::string& text, const std::string& why) {
  throw UsageError("'" + text + "' is not a SID: " + why);
}

// Why the bytes are not one whole SID; empty if they are.
std::string faultOfSid(const std::string& bytes) {
  constexpr size_t kHeader = 8;  // revision, count, authority
  if (bytes.size() < kHeader)
    return "it has only " + std::to_string(bytes.size()) + " of the 8 bytes that it begins with";
  if (bytes[0] != 1) return "its first byte, the revision, is not 1";
  if (bytes.find_first_not_of('\0', 2) < kHeader - 1) return "its authority is above 255";
  const size_t size = kHeader + 4 * static_cast<unsigned char>(bytes[1]);
  if (bytes.size() == size) return "";
  return "it has " + std::to_string(bytes.size()) + " bytes, and its second byte asks for " +
         std::to_string(size);
}

SID sidOfBytes(const std::string& text, const std::string& bytes) {
  const std::string fault = faultOfSid(bytes);
  if (!fault.empty()) refuseSid(text, fault);
  SID sid;
  sid.init(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
  return sid;
}

SID readSid(const std::string& text) {
  if (startsWith(text, "S-", false, false)) return readSidText(text);
  const bool isExtended = text.find("<SID=") != std::string::npos;
  SID sid;
  try {
    if (isExtended) {
      sid.fromExtendedDN(text);
    } else if (text.compare(0, 1, "\\") == 0) {
      sid.fromEscapedString(text);
    } else {
      const std::optional<std::string> bytes = decodeBase64(text);
      if (text.empty() || !bytes) refuseSid(text, "it is neither S-…, base 64, \\01\\05… nor <SID=…>");
      return sidOfBytes(text, *bytes);
    }
  } catch (const VESKException& error) {
    refuseSid(text, error.what());
  }
  if (sid.isNull()) refuseSid(text, "it has no digits");
  const std::string fault = faultOfSid(sid.bytes());
  if (!fault.empty()) refuseSid(text, fault);
  const std::string form = isExtended ? sid.toDN() : sid.toEscapedString();
  if (lower(text).find(lower(form)) == std::string::npos)
    refuseSid(text, "it would be read as " + sid.toMSString());
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

constexpr Option kGuidOptions[] = {
    {"--stored", nullptr, "the bytes of the text form are in stored order, too"},
};

const Command kCommands[] = {
    {"sid",
     "SID",
     "show a SID in all its forms",
     sid,
     {},
     "Reads S-…, base 64 with or without padding, bytes with backslashes (\\01\\05…), and <SID=…>.\n"},
    {"guid", "GUID", "show a GUID in all its forms", guid, kGuidOptions,
     "Reads the text form, 32 digits in stored order, and <GUID=…>.\n"},
    {"dn",
     "OPERATION TEXT",
     "convert a distinguished name",
     dn,
     {},
     "Operations: escape, unescape, escape-ldap, unescape-ldap, escape-filter,\n"
     "escape-canonical, unescape-canonical, canonical, domain, from-domain, parent, cn,\n"
     "plain (without GUID and SID), guid.\n"},
};

}  // namespace

Family valueCommands() {
  return {"Convert values", kCommands, std::size(kCommands)};
}

}  // namespace cli
