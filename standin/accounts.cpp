#include "standin/accounts.h"

#include <cerrno>
#include <cstring>
#include <fstream>

#include <fokrazo/ascii.h>
#include <fokrazo/attrnames.h>
#include <fokrazo/sid.h>
#include <fokrazo/strutil.h>
#include <fokrazo/well_known_sid.h>
#include "standin/attribute_map.h"
#include "standin/directory.h"
#include "standin/error.h"
#include "standin/file_time.h"

namespace standin {
namespace {

using vesk::ValidationResult;

/// Bit of the computed companion of userAccountControl.
constexpr int64_t kAccountLocked = 0x10;
constexpr char kComputedControl[] = "msDS-User-Account-Control-Computed";
/// Bit of the domain's pwdProperties.
constexpr int64_t kComplexityWanted = 1;
constexpr int kClassesWanted = 3;

/// The number of character classes (upper case, lower case, digits, others) in a password.
int countClasses(const std::string& password) {
  bool upperCase = false, lowerCase = false, digit = false, other = false;
  for (const char c : password) {
    bool& used = vesk::isAsciiUpper(c)   ? upperCase
                 : vesk::isAsciiLower(c) ? lowerCase
                 : vesk::isAsciiDigit(c) ? digit
                                         : other;
    used = true;
  }
  return upperCase + lowerCase + digit + other;
}

/// Shorter names may be part of a password.
constexpr size_t kShortestForbiddenName = 3;

bool containsName(const std::string& password, const std::string& name) {
  return name.size() >= kShortestForbiddenName && lower(password).find(lower(name)) != std::string::npos;
}

}  // namespace

Accounts::Accounts(Directory& directory) : m_directory(directory) {}

std::vector<std::string> Accounts::load(const std::string& path) {
  std::ifstream file(path);
  if (!file) throw Error(path + ": " + strerror(errno));
  std::vector<std::string> unknown;
  std::string line;
  for (unsigned number = 1; std::getline(file, line); ++number) {
    if (line.empty() || line[0] == '#') continue;
    size_t colon = line.find(':');
    if (colon == std::string::npos)
      throw Error(path + ", line " + std::to_string(number) + ": the colon is missing");
    std::string name = line.substr(0, colon);
    EntryId account = m_directory.byName(name, Family::Accounts);
    if (account == kNoEntry) {
      unknown.push_back(name);
    } else {
      setPassword(account, line.substr(colon + 1));
    }
  }
  if (file.bad()) throw Error(path + ": cannot be read");
  return unknown;
}

void Accounts::setPassword(EntryId account, const std::string& password) {
  m_secrets[account] = {password, 0};
}

ValidationResult Accounts::validate(EntryId account, const std::string& password) {
  ValidationResult result = checkPassword(account, password);
  return result == vesk::VR_SUCCESS && mustChange(account) ? vesk::VR_PASSWORD_EXPIRED : result;
}

vesk::AccountState Accounts::stateNow(EntryId account) const {
  return vesk::AccountState(AttributeMap(m_directory).object(account, {}), time(nullptr));
}

ValidationResult Accounts::state(EntryId account) const {
  return stateNow(account).accountResult();
}

ValidationResult Accounts::checkPassword(EntryId account, const std::string& password) {
  ValidationResult result = state(account);
  if (result != vesk::VR_SUCCESS) return result;
  auto found = m_secrets.find(account);
  if (found == m_secrets.end()) return vesk::VR_INVALID_PASSWORD;
  if (found->second.password == password) {
    found->second.failures = 0;
    return vesk::VR_SUCCESS;
  }
  int64_t threshold = domainNumber("lockoutThreshold");
  if (++found->second.failures >= threshold && threshold > 0) {
    m_directory.set(account, AD_LOCKOUT_TIME, std::to_string(fromUnixTime(time(nullptr))));
    m_directory.set(account, kComputedControl, std::to_string(kAccountLocked));
  }
  return vesk::VR_INVALID_PASSWORD;
}

bool Accounts::mustChange(EntryId account) const {
  return stateNow(account).mustChangePassword() == vesk::AccountState::Fact::Yes;
}

ValidationResult Accounts::change(EntryId account, const std::string& old, const std::string& wanted) {
  ValidationResult result = checkPassword(account, old);
  if (result == vesk::VR_SUCCESS && old == wanted) result = vesk::VR_PASSWORD_POLICY;
  if (result == vesk::VR_SUCCESS) result = checkPolicy(m_directory[account].first(AD_USERNAME), wanted);
  if (result == vesk::VR_SUCCESS) store(account, wanted);
  return result;
}

ValidationResult Accounts::reset(EntryId account, const std::string& wanted) {
  ValidationResult result = checkPolicy(m_directory[account].first(AD_USERNAME), wanted);
  if (result == vesk::VR_SUCCESS) store(account, wanted);
  return result;
}

ValidationResult Accounts::checkPolicy(const std::string& accountName, const std::string& password) const {
  if (static_cast<int64_t>(password.size()) < domainNumber("minPwdLength")) return vesk::VR_PASSWORD_POLICY;
  if (!(domainNumber("pwdProperties") & kComplexityWanted)) return vesk::VR_SUCCESS;
  bool isComplex = countClasses(password) >= kClassesWanted && !containsName(password, accountName);
  return isComplex ? vesk::VR_SUCCESS : vesk::VR_PASSWORD_POLICY;
}

void Accounts::store(EntryId account, const std::string& password) {
  setPassword(account, password);
  const FileTime now = fromUnixTime(time(nullptr));
  const FileTime longest = domainNumber("maxPwdAge");
  const FileTime expiry = longest >= 0 || longest == kNeverEnds ? INT64_MAX : now - longest;
  m_directory.set(account, AD_PWCHG_LAST, std::to_string(now));
  m_directory.set(account, AD_PASSWORD_EXPIRY, std::to_string(expiry));
  m_directory.set(account, AD_LOCKOUT_TIME, "0");
  m_directory.set(account, kComputedControl, "0");
}

bool Accounts::isAdministrator(EntryId account) const {
  for (const std::string& bytes : m_directory.groupSids(account)) {
    vesk::SID sid = toSid(bytes);
    if (sid.toMSString() == vesk::WELL_KNOWN_SID::ADMINISTRATORS ||
        sid.getObjectRid() == vesk::WELL_KNOWN_RID::DOMAIN_ADMINS)
      return true;
  }
  return false;
}

int64_t Accounts::domainNumber(const char* attribute) const {
  EntryId domain = m_directory.domain().entry;
  return domain == kNoEntry ? 0 : m_directory[domain].number(attribute);
}

void Accounts::login(EntryId account) {
  ++m_logins[account];
}

bool Accounts::logout(EntryId account) {
  auto found = m_logins.find(account);
  if (found == m_logins.end()) return false;
  if (--found->second == 0) m_logins.erase(found);
  return true;
}

unsigned Accounts::logins(EntryId account) const {
  auto found = m_logins.find(account);
  return found == m_logins.end() ? 0 : found->second;
}

}  // namespace standin
