#include <fokrazo/unixviews.h>

#include <utility>

#include <fokrazo/adserializer.h>
#include <fokrazo/attrnames.h>
#include <fokrazo/dn.h>
#include <fokrazo/properties.h>
#include <fokrazo/propnames.h>
#include <fokrazo/strutil.h>
#include <fokrazo/sysrights.h>

namespace vesk {

const std::string NOBODY("nobody");

namespace {

constexpr unsigned int kNobodyId = 65534;
constexpr char kNoLoginShell[] = "/bin/false";
constexpr char kNobodyHome[] = "/";
constexpr char kShadowed[] = "x";
constexpr unsigned int kBaseSysRights = 7;

enum ObjectType : int { kUser = 0, kGroup = 1 };

std::string valueOr(ADObject& object, const std::string& name, const std::string& fallback) {
  const std::string* value = object.firstValue(name);
  return value ? *value : fallback;
}

// The attribute if it has a value, otherwise null. Adds nothing to the object.
const ADAttribute* valued(ADObject& object, const std::string& name) {
  const ADAttributeMap& known = object.attributes();
  const auto found = known.find(name);
  if (found != known.end()) return found->second.empty() ? nullptr : &found->second;
  const bool isInBlob = object.serializer() && object.attributeExists(name, true);
  return isInBlob ? &object[name] : nullptr;
}

unsigned int unsignedOrZero(ADObject& object, const std::string& name) {
  const ADAttribute* attribute = valued(object, name);
  return attribute ? attribute->toUInt() : 0;
}

int64_t int64Or(ADObject& object, const std::string& name, int64_t fallback) {
  const ADAttribute* attribute = valued(object, name);
  return attribute ? attribute->toInt64().value() : fallback;
}

// An empty value counts as missing.
unsigned int idProperty(const std::string& key) {
  std::string value;
  Props(false, false)->lookup(key, value);
  return value.empty() ? kNobodyId : atoui(value.c_str());
}

// An empty value is returned, not replaced by the default.
std::string textProperty(const std::string& key, const std::string& fallback) {
  std::string value;
  return Props(false, false)->lookup(key, value) ? value : fallback;
}

}  // namespace

VeskObj::VeskObj(ADObject object, int objectType, const std::string& idAttribute)
    : m_unixEnabled(object.attributeExists(idAttribute, true)),
      m_objectType(objectType),
      m_object(std::move(object)) {}

VeskObj::~VeskObj() = default;

void VeskObj::readIdentity() {
  m_guid = m_object.guid();
  m_sid = m_object.sid();
  m_acquired = m_object.acquired();
}

bool VeskObj::isUnix() const {
  return m_unixEnabled;
}

Guid VeskObj::getGuid() const {
  return m_guid;
}

SID VeskObj::getSid() const {
  return m_sid;
}

int VeskObj::getType() const {
  return m_objectType;
}

std::string VeskObj::getDN() const {
  return m_dn;
}

ADObject VeskObj::getObject() const {
  return m_object;
}

User::User(ADObject object) : VeskObj(std::move(object), kUser, VESK_UID) {
  if (isUnix())
    readUnixProfile();
  else
    useNobodyProfile();
  readPassword();
  readNames();
  readIdentity();
  readTimes();
  readAccount();
  setDN(this->object()[AD_DN]);
  readSysRights();
}

User::~User() = default;

unsigned int User::getId() const {
  return m_id;
}

std::string User::getName() const {
  return m_name;
}

void User::readUnixProfile() {
  m_id = unsignedOrZero(object(), VESK_UID);
  m_gid = unsignedOrZero(object(), VESK_GID);
  m_unixName = valueOr(object(), VESK_UNIXNAME, EMPTY_STRING);
  m_shell = valueOr(object(), VESK_SHELL, EMPTY_STRING);
  m_gecos = valueOr(object(), VESK_GECOS, EMPTY_STRING);
  if (m_gecos.empty()) m_gecos = valueOr(object(), AD_CN, EMPTY_STRING);
  m_home = valueOr(object(), VESK_HOMEDIR, EMPTY_STRING);
}

void User::useNobodyProfile() {
  m_id = idProperty(PN::NSS_NOBODY_UID);
  m_gid = idProperty(PN::NSS_NOBODY_GID);
  m_unixName = textProperty(PN::NSS_NOBODY_USER, NOBODY);
  m_shell = textProperty(PN::NSS_NOLOGIN_SHELL, kNoLoginShell);
  m_home = kNobodyHome;
}

void User::readPassword() {
  m_password = kShadowed;
  if (const ADAttribute* hash = valued(object(), VESK_ALT_PWHASH))
    m_password = hash->front();
  else if (const ADAttribute* source = valued(object(), VESK_USER_PWSYNC))
    readPasswordFrom(source->front());
}

// `source` is the name of an attribute that may hold the hash.
void User::readPasswordFrom(const std::string& source) {
  const bool plain = source == SFU_PASSWORD || source == AD_R2_PASSWORD;
  if (!plain && source != AD_ALT_PWSYNC_PWHASH) return;
  const ADAttribute* const attribute = valued(object(), source);
  if (!attribute) return;
  if (plain)
    m_password = attribute->front();
  else
    readPrefixedPassword(*attribute);
}

void User::readPrefixedPassword(const std::list<std::string>& identities) {
  constexpr std::string_view kPrefix("qtrPasswordHash:");
  for (const std::string& identity : identities) {
    if (identity.compare(0, kPrefix.size(), kPrefix) != 0) continue;
    m_password = identity.substr(kPrefix.size());
    return;
  }
}

void User::readNames() {
  if (const ADAttribute* identity = valued(object(), AD_ALT_PWSYNC_PWHASH))
    m_altSecurityIdentity = identity->front();
  m_servicePrincipalName = valueOr(object(), AD_SERVER_PRINCIPAL_NAME, EMPTY_STRING);
  m_computedPrincipalName = valueOr(object(), VESK_USER_PRINCIPAL_NAME, EMPTY_STRING);
  m_userPrincipalName = valueOr(object(), AD_USER_PRINCIPAL_NAME, EMPTY_STRING);
  m_name = valueOr(object(), AD_USERNAME, EMPTY_STRING);
}

void User::readTimes() {
  m_accountExpires = int64Or(object(), AD_USER_EXPIRE, -1);
  m_passwordLastSet = int64Or(object(), AD_PWCHG_LAST, -1);
  m_minPasswordAge = int64Or(object(), AD_PWCHG_MIN, -1);
  m_maxPasswordAge = int64Or(object(), AD_PWCHG_MAX, -1);
  m_maxPasswordAgeDisplay = int64Or(object(), AD_PWCHG_MAX_DISPLAY, m_maxPasswordAge);
  m_lockoutTime = int64Or(object(), AD_LOCKOUT_TIME, 0);
}

void User::readAccount() {
  if (const ADAttribute* control = valued(object(), AD_USER_ACCNT_CONTROL))
    m_accountControl = control->toInt();
  if (const ADAttribute* stations = valued(object(), AD_USER_WORKSTATIONS))
    m_workstations = stations->front();
  for (const std::string& sid : object()[VESK_GROUPS]) m_groupSids.push_back(SID(sid));
  m_passwordHash = valueOr(object(), VESK_PASSWD_HASH, EMPTY_STRING);
}

void User::readSysRights() {
  const ADAttribute* const attribute = valued(object(), VESK_SYSRIGHTS);
  const unsigned int rights = attribute ? attribute->toInt() : 0;
  m_hasBaseSysRights = (rights & kBaseSysRights) != 0;
  m_auditLevel = sam::AuditLevelToString(sam::GetAuditLevelFromSysRights(rights));
  m_alwaysPermitLogin = sam::IsAlwaysPermitLogin(rights);
}

Group::Group(ADObject object) : VeskObj(std::move(object), kGroup, VESK_GID), m_password(kShadowed) {
  if (isUnix())
    readUnixProfile();
  else
    useNobodyProfile();
  const std::string dn = this->object()[AD_DN];
  m_canonicalName = DN::canonicalFromDN(dn);
  readIdentity();
  setDN(dn.c_str());  // cppcheck-suppress stlcstrParam ; a zero byte ends it
  m_name = valueOr(this->object(), AD_USERNAME, EMPTY_STRING);
  m_members = this->object()[VESK_GROUP_MEMBERS];
}

Group::~Group() = default;

unsigned int Group::getId() const {
  return m_id;
}

std::string Group::getName() const {
  return m_canonicalName;
}

void Group::readUnixProfile() {
  m_id = unsignedOrZero(object(), VESK_GID);
  m_unixName = valueOr(object(), VESK_GROUPNAME, EMPTY_STRING);
  const ADAttribute* const required = valued(object(), VESK_REQUIRED);
  m_required = required && required->toBool();
}

void Group::useNobodyProfile() {
  m_id = idProperty(PN::NSS_NOBODY_GID);
  m_unixName = textProperty(PN::NSS_NOBODY_GROUP, NOBODY);
}

}  // namespace vesk
