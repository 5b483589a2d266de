/// What name-service and login modules answer for each exception of the library and each result of the
/// daemon. docs/outcomes.md has the whole table.
#pragma once

#include <exception>

#include <fokrazo/export.h>
#include <fokrazo/validation_result.h>

namespace vesk {

/// What matters to the caller. "Not found" is only ever about the name: while the daemon is not running, or
/// cannot reach its directory, no name is "not found".
enum class Outcome : int {
  Success,      ///< done
  NotFound,     ///< the daemon knows that there is no such user or group, or no other one in a listing
  TryAgain,     ///< the same call may succeed in a moment
  Unavailable,  ///< there is no answer, and trying again immediately does not help
  Refused,      ///< a decision against the user or the calling program
};

/// A name-service module's answer; the numbers are those of the C library's `enum nss_status`.
enum class NameStatus : int {
  TryAgain = -2,     ///< NSS_STATUS_TRYAGAIN
  Unavailable = -1,  ///< NSS_STATUS_UNAVAIL
  NotFound = 0,      ///< NSS_STATUS_NOTFOUND
  Success = 1,       ///< NSS_STATUS_SUCCESS
};

/// A login module's answer, named after the PAM code. PAM's numbers differ between systems: a module maps
/// these values with its own table, in this order.
enum class LoginAnswer : int {
  Success,             ///< PAM_SUCCESS
  UserUnknown,         ///< PAM_USER_UNKNOWN
  AuthErr,             ///< PAM_AUTH_ERR
  MaxTries,            ///< PAM_MAXTRIES
  CredInsufficient,    ///< PAM_CRED_INSUFFICIENT
  AuthInfoUnavail,     ///< PAM_AUTHINFO_UNAVAIL
  AcctExpired,         ///< PAM_ACCT_EXPIRED
  NewAuthTokReqd,      ///< PAM_NEW_AUTHTOK_REQD
  PermDenied,          ///< PAM_PERM_DENIED
  AuthTokErr,          ///< PAM_AUTHTOK_ERR
  AuthTokRecoveryErr,  ///< PAM_AUTHTOK_RECOVERY_ERR
  TryAgain,            ///< PAM_TRY_AGAIN
};

/// What to answer. Thread-safety: a plain value.
struct FOKRAZO_API Answer {
  /// The outcome; the other fields translate it for the two kinds of modules.
  Outcome outcome;
  /// The errno that a name-service module sets; 0 on success. Only NotFound has ENOENT, which programs read
  /// as "no such user". Never ERANGE: the module itself reports a buffer that is too small (TryAgain with
  /// ERANGE).
  int error;
  /// For authentication. PAM allows "try again" only in a password change; here and in `account` it is
  /// AuthInfoUnavail, as for Unavailable. An expired password is AuthErr; a module whose account task answers
  /// NewAuthTokReqd may answer Success instead.
  LoginAnswer authenticate;
  /// For the check whether an account may be used.
  LoginAnswer account;
  /// For a password change.
  LoginAnswer password;

  /// The name-service module's answer. A refusal is Unavailable, with EACCES.
  NameStatus nameStatus() const;
};

/// For a result of the daemon. An unknown number counts as VR_UNSPECIFIED_ERROR. Thread-safe.
FOKRAZO_API Answer answerOf(ValidationResult result) noexcept;
/// For an exception, of this library or not. A few are distinguished by their messages. Thread-safe.
FOKRAZO_API Answer answerOf(const std::exception& error) noexcept;
/// For the current exception in a `catch (...)` that keeps a function from throwing.
/// Requires: called in a handler, with thread cancellation disabled (a cancellation must not be caught).
FOKRAZO_API Answer answerOfCurrentException() noexcept;

}  // namespace vesk
