/// Whether an account may be used, as its attributes say: for logins without a password, such as with a key,
/// and for warnings before a password expires.
#pragma once

#include <ctime>
#include <optional>

#include <fokrazo/adobject.h>
#include <fokrazo/export.h>
#include <fokrazo/unixviews.h>
#include <fokrazo/validation_result.h>

namespace vesk {

/// An account's state at one time. It says what the directory would, as far as the account's own attributes
/// tell: not whether the user may log in on this host, and not what has changed since the object was
/// acquired. A missing attribute means what it does in the directory: no expiry, no lock, any hour.
/// Thread-safety: a plain value. While it is constructed, the object must belong to this thread.
class FOKRAZO_API AccountState {
 public:
  /// What an attribute says; Unknown if it cannot be read.
  enum class Fact : int { No, Yes, Unknown };

  /// The state at `now`, in seconds since the epoch. Malformed attributes are no exceptions, but Unknown.
  /// @throws SystemException null handle
  AccountState(ADObject account, time_t now);
  /// As above, for the user's object.
  AccountState(const User& user, time_t now);

  // --- The account ---

  /// An administrator has disabled the account.
  Fact disabled() const { return m_disabled; }
  /// It is locked after too many wrong passwords. If the object does not have what the directory has
  /// computed, a lock counts even if its time is over.
  Fact locked() const { return m_locked; }
  /// The account's own expiry, which is not that of its password, has passed.
  Fact expired() const { return m_expired; }
  /// No logins are allowed in this hour of the week.
  Fact outsideLogonHours() const { return m_outsideLogonHours; }
  /// When the account expires, in seconds since the epoch; empty if never, or if it is unknown.
  std::optional<time_t> accountExpiry() const { return m_accountExpiry; }

  // --- The password; a smart card or a computer needs none, and it does not expire ---

  /// It must be changed at the next login, no matter how old it is.
  Fact mustChangePassword() const { return m_mustChangePassword; }
  /// It is too old. No if it must be changed anyway; Unknown also if its age or the longest age is missing.
  Fact passwordExpired() const { return m_passwordExpired; }
  /// When it was set; empty if it must be changed, or if it is unknown.
  std::optional<time_t> passwordLastSet() const { return m_passwordLastSet; }
  /// When it expires, or has expired; empty if never, or if it is unknown.
  std::optional<time_t> passwordExpiry() const { return m_passwordExpiry; }
  /// The whole days until then, 0 on the last day; empty if it has expired, never expires, or is unknown.
  std::optional<int> passwordDaysLeft() const;

  // --- What a daemon would answer ---

  /// For any login: VR_ACCOUNT_DISABLED, VR_ACCOUNT_LOCKED, VR_ACCOUNT_EXPIRED, VR_LOGON_HOURS, in this
  /// order, or VR_SUCCESS. VR_BAD_DATA if none of them is certain but one is Unknown: an account whose
  /// attributes cannot be read is not let in.
  ValidationResult accountResult() const;
  /// For a login with a correct password: as above, and then VR_PASSWORD_EXPIRED if it has expired or must be
  /// changed. What is Unknown about a password refuses nobody.
  ValidationResult result() const;

 private:
  void readAccount(ADObject& account);
  void readPassword(ADObject& account);

  time_t m_now;
  Fact m_disabled = Fact::No;
  Fact m_locked = Fact::No;
  Fact m_expired = Fact::No;
  Fact m_outsideLogonHours = Fact::No;
  Fact m_mustChangePassword = Fact::No;
  Fact m_passwordExpired = Fact::No;
  std::optional<time_t> m_accountExpiry;
  std::optional<time_t> m_passwordLastSet;
  std::optional<time_t> m_passwordExpiry;
};

}  // namespace vesk
