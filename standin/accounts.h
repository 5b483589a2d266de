/// Passwords and the state of accounts.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include <fokrazo/validation_result.h>
#include "standin/membership.h"

namespace standin {

class Directory;

/// Checks and changes passwords. They are kept in plain text and only in memory: throw-away passwords for
/// development. An account without a password cannot log in.
/// An account that the directory marks as disabled, locked or expired is refused. So is one that has to
/// change its password, with a result of its own. The domain's policy applies to new passwords (length,
/// complexity) and to wrong ones (lockout). Ages of passwords are ignored, so that a sample directory does
/// not grow stale. Thread-safety: one thread at a time.
class Accounts {
 public:
  /// `directory` must outlive this object, which changes it: times of change, lockouts.
  explicit Accounts(Directory& directory);

  /// Reads a file of lines "name:password", ignoring empty lines and those that begin with "#". Returns the
  /// names that no account has.
  /// @throws Error the file cannot be read, or a line has no colon.
  std::vector<std::string> load(const std::string& path);

  /// Sets an account's password without checking the domain's policy.
  void give(EntryId account, const std::string& password);

  /// Whether this is the account's password and the account may be used. Wrong passwords are counted, and
  /// lock the account at the domain's threshold.
  vesk::ValidationResult validate(EntryId account, const std::string& password);
  /// Whether the account may be used at all: not locked, disabled or expired.
  vesk::ValidationResult state(EntryId account) const;
  /// Changes a password on behalf of its owner: as validate, but an expired password is accepted.
  vesk::ValidationResult change(EntryId account, const std::string& old, const std::string& wanted);
  /// Sets a password on behalf of an administrator, which also ends a lockout.
  vesk::ValidationResult reset(EntryId account, const std::string& wanted);
  /// Whether the domain's policy allows a new password for that account name.
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
  bool mustChange(EntryId account) const;
  void store(EntryId account, const std::string& password);
  int64_t domainNumber(const char* attribute) const;

  Directory& m_directory;
  std::unordered_map<EntryId, Secret> m_secrets;
  std::unordered_map<EntryId, unsigned> m_logins;
};

}  // namespace standin
