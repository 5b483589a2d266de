#include "standin/attribute_map.h"

#include <algorithm>
#include <cstdlib>

#include <fokrazo/adserializer.h>
#include <fokrazo/ascii.h>
#include <fokrazo/attrnames.h>
#include <fokrazo/dn.h>
#include <fokrazo/guid.h>
#include <fokrazo/sid.h>
#include "standin/directory.h"
#include "standin/file_time.h"
#include "standin/unix_profile.h"

namespace standin {
namespace {

using Values = std::vector<std::string>;

/// Kinds of entries that have a derived attribute, as bits.
enum Kinds : unsigned { ForAccounts = 1, ForGroups = 2, ForBoth = 3 };

/// An attribute of accounts that copies `first`, or `second` if the first is missing.
struct CopyRow {
  const std::string* name;
  const std::string* first;
  const std::string* second;
};

const CopyRow kCopies[] = {
    {&VESK_SHELL, &AD_R2_SHELL, &SFU_SHELL},
    {&VESK_HOMEDIR, &AD_R2_HOMEDIR, &SFU_HOMEDIR},
    {&VESK_GECOS, &AD_R2_GECOS, &SFU_GECOS},
};

/// What an attribute is derived from.
struct Source {
  const Directory& directory;
  EntryId id;
  const Entry& entry;
};

/// A computed attribute. Without values, the object does not have the attribute.
struct ComputedRow {
  const std::string* name;
  unsigned kinds;
  Values (*make)(const Source& source);
};

Values oneValue(const std::string& value) {
  return value.empty() ? Values() : Values(1, value);
}

Values makeUnixName(const Source& source) {
  return oneValue(unixName(source.entry));
}

/// A number without leading zeros, which views would read as octal.
Values makeNumber(const std::string& text) {
  if (!toUnixId(text)) return {};
  return oneValue(std::to_string(strtoll(text.c_str(), nullptr, 10)));
}

Values makeUid(const Source& source) {
  return makeNumber(eitherValue(source.entry, AD_R2_UID, SFU_UID));
}

Values makeGid(const Source& source) {
  return makeNumber(eitherValue(source.entry, AD_R2_GID, SFU_GID));
}

Values makePrincipal(const Source& source) {
  const std::string& own = source.entry.first(AD_USER_PRINCIPAL_NAME);
  const std::string& account = source.entry.first(AD_USERNAME);
  if (!own.empty() || account.empty()) return oneValue(own);
  return oneValue(account + "@" + source.directory.domain().dnsName);
}

Values makeNtlmName(const Source& source) {
  const std::string& account = source.entry.first(AD_USERNAME);
  return account.empty() ? Values() : oneValue(source.directory.domain().netbiosName + "\\" + account);
}

Values makeGroupSids(const Source& source) {
  Values sids = source.directory.groupSids(source.id);
  for (std::string& sid : sids) sid = toSid(sid).toMSString();
  return sids;
}

Values membersOf(const Source& source, EntryKind kind) {
  Values names;
  for (EntryId member : source.directory.membership().membersBelow(source.id))
    if (source.directory.kind(member) == kind) names.push_back(unixName(source.directory[member]));
  return names;
}

Values makeMembers(const Source& source) {
  return membersOf(source, EntryKind::User);
}

Values makeComputers(const Source& source) {
  return membersOf(source, EntryKind::Computer);
}

/// The domain's entry; empty if it is not in the directory.
const Entry& domainEntry(const Source& source) {
  static const Entry none("");
  EntryId domain = source.directory.domain().entry;
  return domain == kNoEntry ? none : source.directory[domain];
}

Values makeMinAge(const Source& source) {
  return oneValue(domainEntry(source).first("minPwdAge"));
}

Values makeMaxAge(const Source& source) {
  return oneValue(domainEntry(source).first("maxPwdAge"));
}

/// A directory time in days since the epoch, for Unix accounts only; none for "never".
Values makeDay(const Source& source, const std::string& attribute) {
  FileTime time = source.entry.number(attribute);
  if (!unixId(source.entry) || isNever(time)) return {};
  return oneValue(std::to_string(toUnixTime(time) / kSecondsPerDay));
}

/// A duration in days, for Unix accounts only; none for "never".
Values makeDays(const Source& source, const char* attribute) {
  FileTime duration = domainEntry(source).number(attribute);
  if (!unixId(source.entry) || duration >= 0 || duration == kNeverEnds) return {};
  return oneValue(std::to_string(-(duration / kTicksPerSecond / kSecondsPerDay)));
}

Values makeShadowChange(const Source& source) {
  // Zero means that the password must be changed, both in the directory and in shadow.
  bool mustChange = unixId(source.entry) && source.entry.first(AD_PWCHG_LAST) == "0";
  return mustChange ? oneValue("0") : makeDay(source, AD_PWCHG_LAST);
}

Values makeShadowMin(const Source& source) {
  return makeDays(source, "minPwdAge");
}

Values makeShadowMax(const Source& source) {
  return makeDays(source, "maxPwdAge");
}

Values makeShadowExpire(const Source& source) {
  return makeDay(source, AD_USER_EXPIRE);
}

const ComputedRow kComputed[] = {
    {&VESK_UNIXNAME, ForBoth, makeUnixName},
    {&VESK_UID, ForAccounts, makeUid},
    {&VESK_GID, ForBoth, makeGid},
    {&VESK_USER_PRINCIPAL_NAME, ForAccounts, makePrincipal},
    {&VESK_NTLM_USERNAME, ForAccounts, makeNtlmName},
    {&VESK_GROUPS, ForAccounts, makeGroupSids},
    {&VESK_GROUP_MEMBERS, ForGroups, makeMembers},
    {&VESK_COMPUTER_MEMBERS, ForGroups, makeComputers},
    {&AD_PWCHG_MIN, ForAccounts, makeMinAge},
    {&AD_PWCHG_MAX, ForAccounts, makeMaxAge},
    {&VESK_SHADOW_LASTCHANGE, ForAccounts, makeShadowChange},
    {&VESK_SHADOW_MIN, ForAccounts, makeShadowMin},
    {&VESK_SHADOW_MAX, ForAccounts, makeShadowMax},
    {&VESK_SHADOW_EXPIRE, ForAccounts, makeShadowExpire},
};

unsigned kindBit(EntryKind kind) {
  switch (kind) {
    case EntryKind::User:
    case EntryKind::Computer:
      return ForAccounts;
    case EntryKind::Group:
      return ForGroups;
    case EntryKind::Other:
      break;
  }
  return 0;
}

bool isWanted(const std::string& name, const Values& wanted) {
  if (wanted.empty()) return true;
  return std::any_of(wanted.begin(), wanted.end(), [&](const std::string& want) {
    return want == AD_ANY || vesk::equalIgnoringCase(want, name);
  });
}

void append(vesk::ADObject& object, const std::string& name, const Values& values) {
  if (values.empty()) return;
  vesk::ADAttribute& attribute = object[name];
  for (const std::string& value : values) attribute.addVal(value, false, false);
}

/// An object with name, GUID and SID only.
vesk::ADObject bareObject(const Entry& entry) {
  vesk::Guid guid;
  const std::string& guidBytes = entry.first("objectGUID");
  if (guidBytes.size() == vesk::Guid::kSize) guid.fromHexValue(guidBytes);
  vesk::SID sid = toSid(entrySid(entry));
  if (guid.isNull() && sid.isNull()) return vesk::ADObject(entry.dn());
  return vesk::ADObject(vesk::DN::extendedDN(guid, sid, entry.dn()));
}

void appendOwn(vesk::ADObject& object, const Entry& entry, const Values& wanted) {
  for (const Attribute& attribute : entry.attributes())
    if (isWanted(attribute.name, wanted)) append(object, attribute.name, attribute.values);
}

void appendDerived(vesk::ADObject& object, const Source& source, const Values& wanted) {
  unsigned kind = kindBit(source.directory.kind(source.id));
  for (const CopyRow& row : kCopies)
    if ((kind & ForAccounts) && isWanted(*row.name, wanted))
      append(object, *row.name, oneValue(eitherValue(source.entry, *row.first, *row.second)));
  for (const ComputedRow& row : kComputed)
    if ((row.kinds & kind) && isWanted(*row.name, wanted)) append(object, *row.name, row.make(source));
}

}  // namespace

AttributeMap::AttributeMap(const Directory& directory) : m_directory(directory) {}

vesk::ADObject AttributeMap::object(EntryId id, const std::vector<std::string>& wanted) const {
  const Entry& entry = m_directory[id];
  vesk::ADObject object = bareObject(entry);
  appendOwn(object, entry, wanted);
  appendDerived(object, {m_directory, id, entry}, wanted);
  return object;
}

brondalt::Object AttributeMap::root(const std::vector<std::string>& wanted) const {
  const Entry entry = m_directory.rootEntry();
  vesk::ADObject object = bareObject(entry);
  appendOwn(object, entry, wanted);
  return vesk::ADSerializer::serialize(object);
}

brondalt::Object AttributeMap::blob(EntryId id) {
  if (m_generation != m_directory.generation()) {
    m_blobs.clear();
    m_generation = m_directory.generation();
  }
  if (m_blobs.size() <= id) m_blobs.resize(m_directory.size());
  if (!m_blobs[id]) {
    vesk::ADObject complete = object(id, {});
    m_blobs[id] = vesk::ADSerializer::serialize(complete);
  }
  return m_blobs[id];
}

brondalt::Object AttributeMap::blob(EntryId id, const std::vector<std::string>& wanted) {
  if (wanted.empty()) return blob(id);
  vesk::ADObject some = object(id, wanted);
  return vesk::ADSerializer::serialize(some);
}

}  // namespace standin
