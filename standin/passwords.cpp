#include "standin/handlers.h"

#include <fokrazo/attrnames.h>
#include <fokrazo/dn.h>
#include <fokrazo/guid.h>
#include "standin/call.h"
#include "standin/file_time.h"
#include "standin/nt_status.h"
#include "standin/random_bytes.h"
#include "standin/unix_profile.h"

namespace standin {
namespace {

using vesk::ValidationResult;

constexpr char kNormalAccount[] = "512";
constexpr char kDomainUsers[] = "513";

/// The fields of a new account in the order of the request.
struct NewUser {
  std::string name;
  std::string password;
  std::string uid;
  std::string gid;
  std::string fullName;
  std::string home;
  std::string shell;
  std::string container;
};

/// Whether that is an administrator with the right password.
ValidationResult checkAdministrator(Call& call, const std::string& name, const std::string& password) {
  EntryId account = call.account(name);
  if (account == kNoEntry) return vesk::VR_INSUFFICIENT_PERMISSION;
  ValidationResult result = call.service.accounts.validate(account, password);
  if (result != vesk::VR_SUCCESS) return result;
  return call.service.accounts.isAdministrator(account) ? vesk::VR_SUCCESS : vesk::VR_INSUFFICIENT_PERMISSION;
}

/// Without an administrator's name, the user behind the connection decides.
ValidationResult checkPermission(Call& call, const std::string& name, const std::string& password) {
  if (!name.empty()) return checkAdministrator(call, name, password);
  return call.client.mayAdminister ? vesk::VR_SUCCESS : vesk::VR_INSUFFICIENT_PERMISSION;
}

ValidationResult change(Call& call, EntryId account, const std::string& old, const std::string& wanted) {
  return account == kNoEntry ? vesk::VR_INVALID_PRINCIPAL
                             : call.service.accounts.change(account, old, wanted);
}

ValidationResult reset(Call& call, EntryId account, const std::string& wanted) {
  return account == kNoEntry ? vesk::VR_INVALID_PRINCIPAL : call.service.accounts.reset(account, wanted);
}

ValidationResult checkNewUser(Call& call, const NewUser& user) {
  const Directory& directory = call.service.directory;
  bool idsAreGood = (user.uid.empty() || toUnixId(user.uid)) && (user.gid.empty() || toUnixId(user.gid));
  if (user.name.empty() || !idsAreGood) return vesk::VR_BAD_PARAMETER;
  if (directory.byName(user.name, Family::Both) != kNoEntry) return vesk::VR_BAD_PARAMETER;
  if (!user.uid.empty() && directory.byUnixId(*toUnixId(user.uid), Family::Accounts) != kNoEntry)
    return vesk::VR_BAD_PARAMETER;
  if (!user.container.empty() && directory.byDn(user.container) == kNoEntry)
    return vesk::VR_INVALID_CONTAINER;
  return call.service.accounts.checkPolicy(user.name, user.password);
}

void setIfGiven(Entry& entry, const std::string& attribute, const std::string& value) {
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
  setIfGiven(entry, AD_OBJECT_SID, directory.nextSid());
  entry.set(AD_PWCHG_LAST, std::to_string(fromUnixTime(time(nullptr))));
  entry.set(AD_WHEN_CREATED, directoryTime(time(nullptr)));
  entry.set(AD_WHEN_CHANGED, directoryTime(time(nullptr)));
  entry.set(AD_USN_CREATED, std::to_string(directory.highestUsn() + 1));
  entry.set(AD_USN_CHANGED, std::to_string(directory.highestUsn() + 1));
  setIfGiven(entry, AD_R2_UID, user.uid);
  setIfGiven(entry, AD_R2_GID, user.gid);
  setIfGiven(entry, AD_DISPLAY_NAME, user.fullName);
  setIfGiven(entry, AD_R2_GECOS, user.fullName);
  setIfGiven(entry, AD_R2_HOMEDIR, user.home);
  setIfGiven(entry, AD_R2_SHELL, user.shell);
  return entry;
}

}  // namespace

void handlers::changePassword(Call& call) {
  EntryId account = call.account(call.request.getString());
  std::string old = call.request.getString();
  std::string wanted = call.request.getString();
  call.request.getInt();
  call.answer(change(call, account, old, wanted));
}

void handlers::setPassword(Call& call) {
  EntryId account = call.account(call.request.getString());
  std::string wanted = call.request.getString();
  std::string administrator = call.request.getString();
  std::string password = call.request.getString();
  ValidationResult result = checkPermission(call, administrator, password);
  call.answer(result == vesk::VR_SUCCESS ? reset(call, account, wanted) : result);
}

void handlers::setPasswordKrb5(Call& call) {
  EntryId account = call.account(call.request.getString());
  std::string wanted = call.request.getString();
  ValidationResult result = checkPermission(call, "", "");
  call.answer(result == vesk::VR_SUCCESS ? reset(call, account, wanted) : result);
}

void handlers::addUser(Call& call) {
  NewUser user;
  for (std::string* field : {&user.name, &user.password, &user.uid, &user.gid, &user.fullName, &user.home,
                             &user.shell, &user.container})
    *field = call.request.getString();
  std::string administrator, password;
  if (call.request.hasMore()) {
    administrator = call.request.getString();
    password = call.request.getString();
  }
  ValidationResult result = checkPermission(call, administrator, password);
  if (result == vesk::VR_SUCCESS) result = checkNewUser(call, user);
  if (result != vesk::VR_SUCCESS) return call.answer(result);
  EntryId account = call.service.directory.add(makeEntry(call.service.directory, user));
  call.service.accounts.give(account, user.password);
  call.succeed();
}

void handlers::setMachinePassword(Call& call) {
  std::string computer = call.request.getString();
  std::string wanted = call.request.getString();
  std::string administrator = call.request.getString();
  std::string password = call.request.getString();
  ValidationResult result = checkPermission(call, administrator, password);
  if (result != vesk::VR_SUCCESS) return call.answer(result);
  // This host has no account in the directory that could ask for its secret again.
  if (computer.empty()) return call.answer(vesk::VR_SUCCESS);
  EntryId account = call.account(computer);
  if (account == kNoEntry) account = call.account(computer + "$");
  bool isComputer = account != kNoEntry && call.service.directory.kind(account) == EntryKind::Computer;
  call.answer(reset(call, isComputer ? account : kNoEntry, wanted));
}

void handlers::samChangePassword(Call& call) {
  EntryId account = call.account(call.request.getString());
  std::string wanted = call.request.getString();
  std::string old = call.request.getString();
  call.request.getString();
  call.request.getString();
  ValidationResult result = change(call, account, old, wanted);
  call.answer(result, ntStatus(result));
}

}  // namespace standin
