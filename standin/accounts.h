/// Passwords and account states.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include <fokrazo/account_state.h>
#include <fokrazo/validation_result.h>
#include "standin/membership.h"

namespace standin {

class Directory;

/// Checks and changes passwords. They are kept in plain text, only in memory: disposable passwords for
/// development. An account without a password cannot log in. An account that is disabled, locked or expired,
/// or outside its logon hours, is refused, and so, with its own result, is one that must change its password.
/// The domain's policy applies to new passwords (length, complexity) and to wrong ones (lockout). Password
/// ages are ignored, so that a sample directory does not expire. Thread-safety: one thread at a time.
class Accounts {
 public:
  /// `directory` must outlive this object, which updates it: password changes, lockouts.
  explicit Accounts(Directory& directory);

  /// Reads a file of lines "name:password", ignoring empty lines and those that begin with "#". Returns the
  /// unknown names. @throws Error the file cannot be read, or a line has no colon
  std::vector<std::string> load(const std::string& path);

  /// Sets an account's password without checking the domain's policy.
  void setPassword(EntryId account, const std::string& password);

  /// Checks the password and the account's state. Wrong passwords are counted, and lock the account at the
  /// domain's threshold.
  vesk::ValidationResult validate(EntryId account, const std::string& password);
  /// Whether the account may be used: not locked, disabled or expired.
  vesk::ValidationResult state(EntryId account) const;
  /// Changes a password on behalf of its owner. Checks as validate, but accepts an expired password.
  vesk::ValidationResult change(EntryId account, const std::string& old, const std::string& wanted);
  /// Sets a password on behalf of an administrator, which also ends a lockout.
  vesk::ValidationResult reset(EntryId account, const std::string& wanted);
  /// Whether the domain's policy allows `password` for that account.
  vesk::ValidationResult checkPolicy(const std::string& accountName, const std::string& password) const;

  bool isAdministrator(EntryId account) const;

  /// Counts a login; there is no limit.
  void login(EntryId account);
  /// Counts a logout; false if the account is not logged in.
  bool logout(EntryId account);
  unsigned logins(EntryId account) const;

 private:
  struct Secret {
    std::string password;
    unsigned failures = 0;
  };

  vesk::ValidationResult checkPassword(EntryId account, const std::string& password);
  vesk::AccountState stateNow(EntryId account) const;
  bool mustChange(EntryId account) const;
  void store(EntryId account, const std::string& password);
  int64_t domainNumber(const char* attribute) const;

  Directory& m_directory;
  std::unordered_map<EntryId, Secret> m_secrets;
  std::unordered_map<EntryId, unsigned> m_logins;
};

}  // namespace standin
