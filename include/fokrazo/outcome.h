/// What a failure means to the modules that stand between this library and the host: for each exception and
/// each result of the daemon, what a name-service module and a login module answer. All of it as one table:
/// docs/outcomes.md.
#pragma once

#include <exception>

#include <fokrazo/export.h>
#include <fokrazo/validation_result.h>

namespace vesk {

/// The one distinction that matters to the caller. "Not found" is about the name that was asked for and
/// nothing else: while the daemon is away, or cannot reach its directory, no name is "not found".
enum class Outcome : int {
  Success,      ///< done
  NotFound,     ///< the daemon knows that there is no such user or group, or no further one
  TryAgain,     ///< the same call may work in a moment
  Unavailable,  ///< the question cannot be answered, and asking again at once is no use
  Refused,      ///< a decision about the person, or about the program that asks
};

/// A name-service module's answer; the numbers are those of the C library's `enum nss_status`.
enum class NameStatus : int {
  TryAgain = -2,     ///< NSS_STATUS_TRYAGAIN
  Unavailable = -1,  ///< NSS_STATUS_UNAVAIL
  NotFound = 0,      ///< NSS_STATUS_NOTFOUND
  Success = 1,       ///< NSS_STATUS_SUCCESS
};

/// A login module's answer, under the name of PAM's code without its prefix. PAM's numbers differ between
/// systems, so that a module maps these by a table of its own, in this order.
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
  /// Which of the five it is; the rest says the same in the words of the two kinds of modules.
  Outcome outcome;
  /// For the errno that a name-service module sets, 0 on success. Not found alone is ENOENT, which programs
  /// take for "no such user"; too small a buffer is the module's own matter (TryAgain with ERANGE), and no
  /// row says ERANGE.
  int error;
  /// For a login module that authenticates. PAM has a code for "try again" in a password change alone; here
  /// and for an account it is AuthInfoUnavail, as unavailable is. An expired password is AuthErr: a module
  /// that has its account task answer NewAuthTokReqd may answer Success instead.
  LoginAnswer authenticate;
  /// For a login module that says whether an account may be used.
  LoginAnswer account;
  /// For a login module that changes a password.
  LoginAnswer password;

  /// The name-service module's answer. A refusal is Unavailable there, with EACCES.
  NameStatus nameStatus() const;
};

/// For a result of the daemon. A number that is none is answered as VR_UNSPECIFIED_ERROR. Thread-safe.
FOKRAZO_API Answer answerOf(ValidationResult result) noexcept;
/// For an exception, of this library or not. A few are told apart by their texts. Thread-safe.
FOKRAZO_API Answer answerOf(const std::exception& error) noexcept;
/// For the exception in a `catch (...)`: the last line of a function that must not throw.
/// Requires: called in a handler, with thread cancellation off (a cancellation must not be caught).
FOKRAZO_API Answer answerOfCurrentException() noexcept;

}  // namespace vesk
