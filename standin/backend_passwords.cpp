#include "standin/ldif_backend.h"

#include <fokrazo/attrnames.h>
#include <fokrazo/dn.h>
#include <fokrazo/guid.h>
#include "standin/file_time.h"
#include "standin/nt_status.h"
#include "standin/random_bytes.h"
#include "standin/unix_profile.h"

namespace standin {

using namespace brondalt;
using vesk::ValidationResult;

namespace {

constexpr char kNormalAccount[] = "512";
constexpr char kDomainUsers[] = "513";

void setUnlessEmpty(Entry& entry, const std::string& attribute, const std::string& value) {
  if (!value.empty()) entry.set(attribute, value);
}

Entry makeEntry(const Directory& directory, const NewUser& user) {
  std::string container = user.container.empty() ? "CN=Users," + directory.domain().baseDn : user.container;
  Entry entry("CN=" + vesk::DN::escapeDNString(user.name) + "," + container);
  for (const std::string& objectClass : {AD_OC_TOP, AD_OC_PERSON, AD_OC_ORG_PERSON, std::string("user")})
    entry.add(AD_OBJECT_CLASS, objectClass);
  entry.set(AD_CN, user.name);
  entry.set(AD_NAME, user.name);
  entry.set(AD_DISTINGUISHED_NAME, entry.dn());
  entry.set(AD_USERNAME, user.name);
  entry.set(AD_USER_PRINCIPAL_NAME, user.name + "@" + directory.domain().dnsName);
  entry.set(AD_OBJECT_CATEGORY, "CN=Person," + AD_CATEGORY_SCHEMA + "," + directory.domain().baseDn);
  entry.set(AD_USER_ACCNT_CONTROL, kNormalAccount);
  entry.set(AD_PRIMARY_GID, kDomainUsers);
  entry.set("objectGUID", randomBytes(vesk::Guid::kSize));
  setUnlessEmpty(entry, AD_OBJECT_SID, directory.nextSid());
  entry.set(AD_PWCHG_LAST, std::to_string(fromUnixTime(time(nullptr))));
  entry.set(AD_WHEN_CREATED, directoryTime(time(nullptr)));
  entry.set(AD_WHEN_CHANGED, directoryTime(time(nullptr)));
  entry.set(AD_USN_CREATED, std::to_string(directory.highestUsn() + 1));
  entry.set(AD_USN_CHANGED, std::to_string(directory.highestUsn() + 1));
  setUnlessEmpty(entry, AD_R2_UID, user.uid);
  setUnlessEmpty(entry, AD_R2_GID, user.gid);
  setUnlessEmpty(entry, AD_DISPLAY_NAME, user.fullName);
  setUnlessEmpty(entry, AD_R2_GECOS, user.fullName);
  setUnlessEmpty(entry, AD_R2_HOMEDIR, user.home);
  setUnlessEmpty(entry, AD_R2_SHELL, user.shell);
  return entry;
}

}  // namespace

/// Whether this is an administrator with the correct password.
ValidationResult LdifBackend::checkAdministrator(const Administrator& administrator) {
  const EntryId id = account(administrator.name);
  if (id == kNoEntry) return vesk::VR_INSUFFICIENT_PERMISSION;
  const ValidationResult result = m_accounts.validate(id, administrator.password);
  if (result != vesk::VR_SUCCESS) return result;
  return m_accounts.isAdministrator(id) ? vesk::VR_SUCCESS : vesk::VR_INSUFFICIENT_PERMISSION;
}

/// Without an administrator's name, the caller's rights decide.
ValidationResult LdifBackend::checkPermission(const Caller& caller, const Administrator& administrator) {
  if (!administrator.name.empty()) return checkAdministrator(administrator);
  return caller.mayAdminister ? vesk::VR_SUCCESS : vesk::VR_INSUFFICIENT_PERMISSION;
}

ValidationResult LdifBackend::change(const std::string& user, const std::string& old,
                                     const std::string& wanted) {
  const EntryId id = account(user);
  return id == kNoEntry ? vesk::VR_INVALID_PRINCIPAL : m_accounts.change(id, old, wanted);
}

ValidationResult LdifBackend::reset(EntryId account, const std::string& wanted) {
  return account == kNoEntry ? vesk::VR_INVALID_PRINCIPAL : m_accounts.reset(account, wanted);
}

ValidationResult LdifBackend::checkNewUser(const NewUser& user) const {
  const bool idsAreGood =
      (user.uid.empty() || toUnixId(user.uid)) && (user.gid.empty() || toUnixId(user.gid));
  if (user.name.empty() || !idsAreGood) return vesk::VR_BAD_PARAMETER;
  if (m_directory.byName(user.name, Family::Both) != kNoEntry) return vesk::VR_BAD_PARAMETER;
  if (!user.uid.empty() && m_directory.byUnixId(*toUnixId(user.uid), Family::Accounts) != kNoEntry)
    return vesk::VR_BAD_PARAMETER;
  if (!user.container.empty() && m_directory.byDn(user.container) == kNoEntry)
    return vesk::VR_INVALID_CONTAINER;
  return m_accounts.checkPolicy(user.name, user.password);
}

void LdifBackend::changePassword(const std::string& user, const vesk::Shredder& old,
                                 const vesk::Shredder& wanted, DoneStatus done) {
  done(change(user, old, wanted));
}

void LdifBackend::samChangePassword(const std::string& user, const vesk::Shredder& old,
                                    const vesk::Shredder& wanted, DoneStatus done) {
  const ValidationResult result = change(user, old, wanted);
  done(Status(result, "", ntStatus(result)));
}

void LdifBackend::setPassword(const Caller& caller, const std::string& user, const vesk::Shredder& wanted,
                              const Administrator& administrator, DoneStatus done) {
  const ValidationResult result = checkPermission(caller, administrator);
  done(result == vesk::VR_SUCCESS ? reset(account(user), wanted) : result);
}

void LdifBackend::setMachinePassword(const Caller& caller, const std::string& computer,
                                     const vesk::Shredder& wanted, const Administrator& administrator,
                                     DoneStatus done) {
  const ValidationResult result = checkPermission(caller, administrator);
  if (result != vesk::VR_SUCCESS) return done(result);
  // Nothing to store: this host has no account in the directory.
  if (computer.empty()) return done(vesk::VR_SUCCESS);
  EntryId id = account(computer);
  if (id == kNoEntry) id = account(computer + "$");
  const bool isComputer = id != kNoEntry && m_directory.kind(id) == EntryKind::Computer;
  done(reset(isComputer ? id : kNoEntry, wanted));
}

void LdifBackend::addUser(const Caller& caller, const NewUser& user, const Administrator& administrator,
                          DoneStatus done) {
  ValidationResult result = checkPermission(caller, administrator);
  if (result == vesk::VR_SUCCESS) result = checkNewUser(user);
  if (result != vesk::VR_SUCCESS) return done(result);
  const EntryId id = m_directory.add(makeEntry(m_directory, user));
  m_accounts.setPassword(id, user.password);
  done(vesk::VR_SUCCESS);
}

}  // namespace standin
