#include "standin/directory.h"

#include <algorithm>
#include <utility>

#include <fokrazo/ascii.h>
#include <fokrazo/attrnames.h>
#include <fokrazo/byteorder.h>
#include <fokrazo/dn.h>
#include <fokrazo/guid.h>
#include <fokrazo/strutil.h>
#include "standin/dn_key.h"
#include "standin/error.h"
#include "standin/ldif_reader.h"
#include "standin/unix_profile.h"

namespace standin {
namespace {

constexpr size_t kSidHeadSize = 8;
constexpr size_t kRidSize = 4;
constexpr unsigned char kMaxSubAuthorities = 15;
constexpr size_t kDomainSidSize = kSidHeadSize + 4 * kRidSize;
constexpr unsigned kFirstFreeRid = 1000;
constexpr size_t kNetbiosLimit = 15;

std::string ridBytes(unsigned rid) {
  unsigned char bytes[kRidSize];
  vesk::PutLoHi32(bytes, rid);
  return std::string(bytes, bytes + kRidSize);
}

unsigned ridOf(const std::string& sid) {
  return vesk::GetLoHi32(reinterpret_cast<const unsigned char*>(sid.data() + sid.size() - kRidSize));
}

template <class Map, class Key>
EntryId findIn(const Map& map, const Key& key) {
  auto found = map.find(key);
  return found == map.end() ? kNoEntry : found->second;
}

template <class Take>
void forEachValue(const Entry& entry, std::string_view attribute, Take take) {
  const Attribute* found = entry.find(attribute);
  if (!found) return;
  for (const std::string& value : found->values) take(value);
}

}  // namespace

void NameIndex::add(const std::string& name, EntryId id) {
  if (!name.empty()) m_byFoldedName[lower(name)].push_back({name, id});
}

EntryId NameIndex::find(std::string_view name) const {
  const Named* named = findNamed(name);
  return named ? named->id : kNoEntry;
}

const std::string* NameIndex::findName(std::string_view name) const {
  const Named* named = findNamed(name);
  return named ? &named->name : nullptr;
}

const NameIndex::Named* NameIndex::findNamed(std::string_view name) const {
  auto found = m_byFoldedName.find(lower(std::string(name)));
  if (found == m_byFoldedName.end()) return nullptr;
  for (const Named& named : found->second)
    if (named.name == name) return &named;
  return &found->second.front();
}

Directory::Directory() = default;
Directory::~Directory() = default;

EntryId Directory::add(Entry entry) {
  if (entry.dn().empty()) {
    m_ownRoot = std::make_unique<const Entry>(std::move(entry));
    return kNoEntry;
  }
  EntryId id = static_cast<EntryId>(m_entries.size());
  auto [place, isNew] = m_byDn.try_emplace(dnKey(entry.dn()), id);
  if (!isNew) throw Error("duplicate entry with the DN " + entry.dn());
  EntryKind kind = entry.kind();
  m_entries.push_back({std::move(entry), kind, &place->first});
  index(id);
  touch();
  return id;
}

void Directory::load(const std::string& ldifPath) {
  readLdif(ldifPath, [this](Entry&& entry) { add(std::move(entry)); });
}

void Directory::touch() {
  ++m_generation;
  m_domain.reset();
  m_membership.reset();
}

void Directory::index(EntryId id) {
  const Entry& entry = (*this)[id];
  if (isOf(id, Family::Accounts)) indexNames(id, m_accounts);
  if (isOf(id, Family::Groups)) indexNames(id, m_groups);
  std::string sid = entrySid(entry);
  if (!sid.empty()) m_bySid.try_emplace(std::move(sid), id);
  const std::string& guid = entry.first("objectGUID");
  if (guid.size() == vesk::Guid::kSize) m_byGuid.try_emplace(guid, id);
  forEachValue(entry, AD_SERVER_PRINCIPAL_NAME, [&](const std::string& name) { m_services.add(name, id); });
  m_usn = std::max(m_usn, entry.number(AD_USN_CHANGED));
}

void Directory::indexNames(EntryId id, Names& names) {
  const Entry& entry = (*this)[id];
  names.unixNames.add(unixName(entry), id);
  forEachValue(entry, AD_R2_USERNAME, [&](const std::string& name) { names.unixNames.add(name, id); });
  names.accountNames.add(entry.first(AD_USERNAME), id);
  names.principals.add(entry.first(AD_USER_PRINCIPAL_NAME), id);
  if (std::optional<uint32_t> number = unixId(entry)) names.ids.try_emplace(*number, id);
}

const Domain& Directory::domain() const {
  if (m_domain) return *m_domain;
  auto domain = std::make_unique<Domain>();
  for (EntryId id = 0; id < size(); ++id) {
    const std::string& dn = (*this)[id].dn();
    bool isDomain = (*this)[id].has(AD_OBJECT_CLASS, "domainDNS");
    if (!vesk::DN::isDN(dn) || !(isDomain || domain->dnsName.empty())) continue;
    domain->dnsName = lower(vesk::DN::domainFromDN(dn));
    if (!isDomain) continue;
    domain->entry = id;
    break;
  }
  domain->realm = upper(domain->dnsName);
  domain->netbiosName = domain->realm.substr(0, std::min(domain->realm.find('.'), kNetbiosLimit));
  if (!domain->dnsName.empty()) domain->baseDn = vesk::DN::dnFromDomain(domain->dnsName);
  m_domain = std::move(domain);
  return *m_domain;
}

Entry Directory::derivedRoot() const {
  Entry root("");
  root.set(AD_OBJECT_CLASS, AD_OC_TOP);
  if (!domain().baseDn.empty()) {
    root.set(AD_DEFAULT_NAMING_CTX, domain().baseDn);
    root.set(AD_ROOT_NAMING_CTX, domain().baseDn);
    root.set("namingContexts", domain().baseDn);
  }
  root.set(AD_HIGHEST_USN, std::to_string(m_usn));
  root.set("supportedLDAPVersion", "3");
  return root;
}

Entry Directory::rootEntry() const {
  Entry root = m_ownRoot ? *m_ownRoot : derivedRoot();
  root.set("currentTime", directoryTime(time(nullptr)));
  return root;
}

EntryId Directory::byDn(std::string_view dn) const {
  return findIn(m_byDn, dnKey(dn));
}

template <class Find>
EntryId Directory::inFamilies(Family family, Find find) const {
  EntryId id = family == Family::Groups ? kNoEntry : find(m_accounts);
  return id == kNoEntry && family != Family::Accounts ? find(m_groups) : id;
}

EntryId Directory::byName(std::string_view name, Family family) const {
  EntryId id = byUnixName(name, family);
  if (id == kNoEntry) id = byWindowsName(name, family);
  return id;
}

EntryId Directory::byUnixName(std::string_view name, Family family) const {
  return inFamilies(family, [&](const Names& names) { return names.unixNames.find(name); });
}

EntryId Directory::byWindowsName(std::string_view name, Family family) const {
  EntryId id = inFamilies(family, [&](const Names& names) { return windowsName(name, names); });
  if (id == kNoEntry) id = byDn(name);
  return id != kNoEntry && isOf(id, family) ? id : kNoEntry;
}

EntryId Directory::windowsName(std::string_view name, const Names& names) const {
  EntryId id = names.accountNames.find(name);
  if (id == kNoEntry) id = names.principals.find(name);
  if (id != kNoEntry) return id;
  size_t backslash = name.find('\\');
  if (backslash != std::string_view::npos && isDomainName(name.substr(0, backslash)))
    return names.accountNames.find(name.substr(backslash + 1));
  size_t at = name.rfind('@');
  if (at != std::string_view::npos && isDomainName(name.substr(at + 1)))
    return names.accountNames.find(name.substr(0, at));
  return kNoEntry;
}

EntryId Directory::byUnixId(uint32_t id, Family family) const {
  return inFamilies(family, [&](const Names& names) { return findIn(names.ids, id); });
}

EntryId Directory::bySid(std::string_view sid) const {
  return findIn(m_bySid, std::string(sid));
}

EntryId Directory::byGuid(std::string_view guid) const {
  return findIn(m_byGuid, std::string(guid));
}

const std::string* Directory::findService(std::string_view name) const {
  return m_services.findName(name);
}

bool Directory::isOf(EntryId id, Family family) const {
  bool isGroup = kind(id) == EntryKind::Group;
  bool isAccount = kind(id) == EntryKind::User || kind(id) == EntryKind::Computer;
  return (isGroup && family != Family::Accounts) || (isAccount && family != Family::Groups);
}

bool Directory::isDomainName(std::string_view name) const {
  return !name.empty() && (vesk::equalIgnoringCase(name, domain().dnsName) ||
                           vesk::equalIgnoringCase(name, domain().netbiosName));
}

const Membership& Directory::membership() const {
  if (m_membership) return *m_membership;
  auto membership = std::make_unique<Membership>(size());
  for (EntryId id = 0; id < size(); ++id) {
    if (kind(id) == EntryKind::Group) linkGroup(id, *membership);
    linkMember(id, *membership);
  }
  membership->finish();
  m_membership = std::move(membership);
  return *m_membership;
}

void Directory::linkGroup(EntryId group, Membership& membership) const {
  auto take = [&](EntryId member) {
    if (member != kNoEntry) membership.add(member, group);
  };
  const Entry& entry = (*this)[group];
  forEachValue(entry, AD_GROUP_MEMBERS, [&](const std::string& dn) { take(byDn(dn)); });
  forEachValue(entry, SFU_GROUP_MEMBERS, [&](const std::string& dn) { take(byDn(dn)); });
  forEachValue(entry, AD_R2_GROUP_MEMBERS,
               [&](const std::string& name) { take(byUnixName(name, Family::Accounts)); });
}

void Directory::linkMember(EntryId member, Membership& membership) const {
  auto take = [&](EntryId group) {
    if (group != kNoEntry && kind(group) == EntryKind::Group) membership.add(member, group);
  };
  const Entry& entry = (*this)[member];
  forEachValue(entry, AD_MEMBEROF, [&](const std::string& dn) { take(byDn(dn)); });
  // Computed by the original directory, possibly through groups that are not in the file.
  forEachValue(entry, AD_TOKEN_GROUPS, [&](const std::string& sid) { take(bySid(sid)); });
  take(bySid(primaryGroupSid(entry)));
}

std::vector<std::string> Directory::groupSids(EntryId account) const {
  std::vector<std::string> sids;
  for (EntryId group : membership().groupsAbove(account)) {
    std::string sid = entrySid((*this)[group]);
    if (!sid.empty()) sids.push_back(std::move(sid));
  }
  forEachValue((*this)[account], AD_TOKEN_GROUPS, [&](const std::string& sid) {
    if (isSid(sid) && bySid(sid) == kNoEntry) sids.push_back(sid);
  });
  return sids;
}

void Directory::set(EntryId id, std::string_view attribute, const std::string& value) {
  Entry& entry = m_entries[id].entry;
  entry.set(attribute, value);
  entry.set(AD_USN_CHANGED, std::to_string(++m_usn));
  entry.set(AD_WHEN_CHANGED, directoryTime(time(nullptr)));
  ++m_generation;
}

std::string Directory::nextSid() const {
  std::string domainSid = domain().entry == kNoEntry ? std::string() : entrySid((*this)[domain().entry]);
  if (domainSid.size() != kDomainSidSize) return std::string();
  unsigned highest = kFirstFreeRid;
  for (EntryId id = 0; id < size(); ++id) {
    if (!isOf(id, Family::Both)) continue;
    std::string sid = entrySid((*this)[id]);
    if (sid.size() == kDomainSidSize + kRidSize &&
        sid.compare(kSidHeadSize, 4 * kRidSize, domainSid, kSidHeadSize, 4 * kRidSize) == 0)
      highest = std::max(highest, ridOf(sid));
  }
  ++domainSid[1];
  return domainSid + ridBytes(highest + 1);
}

bool isSid(const std::string& bytes) {
  if (bytes.size() < kSidHeadSize) return false;
  unsigned char count = static_cast<unsigned char>(bytes[1]);
  return count <= kMaxSubAuthorities && bytes.size() == kSidHeadSize + count * kRidSize;
}

vesk::SID toSid(const std::string& bytes) {
  vesk::SID sid;
  sid.init(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
  return sid;
}

std::string entrySid(const Entry& entry) {
  const std::string& sid = entry.first(AD_OBJECT_SID);
  return isSid(sid) ? sid : std::string();
}

std::string primaryGroupSid(const Entry& entry) {
  std::string sid = entrySid(entry);
  if (entry.first(AD_PRIMARY_GID).empty() || sid.size() < kSidHeadSize + kRidSize) return std::string();
  sid.resize(sid.size() - kRidSize);
  return sid + ridBytes(static_cast<unsigned>(entry.number(AD_PRIMARY_GID)));
}

std::string directoryTime(time_t time) {
  char text[32];
  tm parts = {};
  gmtime_r(&time, &parts);
  strftime(text, sizeof text, "%Y%m%d%H%M%S.0Z", &parts);
  return text;
}

}  // namespace standin
