#include "lrpc/session/outcome_internal.h"

#include <cerrno>
#include <cstddef>
#include <new>

#include <fokrazo/error_util.h>
#include <fokrazo/ipc_exception.h>

namespace vesk {

namespace {

using L = LoginAnswer;

constexpr Answer success() {
  return {Outcome::Success, 0, L::Success, L::Success, L::Success};
}

constexpr Answer notFound() {
  return {Outcome::NotFound, ENOENT, L::UserUnknown, L::UserUnknown, L::UserUnknown};
}

constexpr Answer tryAgain(int error) {
  return {Outcome::TryAgain, error, L::AuthInfoUnavail, L::AuthInfoUnavail, L::TryAgain};
}

constexpr Answer unavailable(int error) {
  return {Outcome::Unavailable, error, L::AuthInfoUnavail, L::AuthInfoUnavail, L::AuthInfoUnavail};
}

constexpr Answer refused(L authenticate, L account, L password) {
  return {Outcome::Refused, EACCES, authenticate, account, password};
}

// The calling program lacks permission; this says nothing about the user.
constexpr Answer programRefused() {
  return refused(L::CredInsufficient, L::PermDenied, L::PermDenied);
}

template <class Exception>
bool isA(const std::exception* exception) {
  return dynamic_cast<const Exception*>(exception) != nullptr;
}

}  // namespace

// clang-format off
extern constexpr ResultRow kResultRows[48] = {
  {VR_SUCCESS,                   success()},
  {VR_INVALID_PRINCIPAL,         notFound()},
  {VR_INVALID_PASSWORD,          refused(L::AuthErr, L::AuthErr, L::AuthTokRecoveryErr)},
  {VR_ACCOUNT_LOCKED,            refused(L::MaxTries, L::PermDenied, L::PermDenied)},
  {VR_PASSWORD_EXPIRED,          refused(L::AuthErr, L::NewAuthTokReqd, L::PermDenied)},
  {VR_PASSWORD_POLICY,           refused(L::AuthErr, L::PermDenied, L::AuthTokErr)},
  {VR_PASSWORD_REJECTED,         refused(L::AuthErr, L::PermDenied, L::AuthTokErr)},
  {VR_ACCOUNT_EXPIRED,           refused(L::AuthErr, L::AcctExpired, L::PermDenied)},
  {VR_WORKSTATION_DENIED,        refused(L::AuthErr, L::PermDenied, L::PermDenied)},
  {VR_EXTENDED_ERROR,            unavailable(EIO)},
  {VR_INSUFFICIENT_PERMISSION,   programRefused()},
  {VR_SYSTEM_ERROR,              unavailable(EIO)},
  {VR_BAD_PACKET,                unavailable(EIO)},
  {VR_UNSPECIFIED_ERROR,         unavailable(EIO)},
  {VR_NOT_JOINED,                unavailable(EIO)},
  {VR_VALUE_NOT_SET,             unavailable(EIO)},
  {VR_SERVER_UNREACHABLE,        unavailable(ENETUNREACH)},
  {VR_NOT_FOUND,                 notFound()},
  {VR_JOINED_ELSEWHERE,          unavailable(EIO)},
  {VR_DISCONNECTED_MODE,         unavailable(ENETUNREACH)},
  {VR_PROCESS_AUTH_FAILED,       programRefused()},
  {VR_NETWORK_ERROR,             unavailable(ENETUNREACH)},
  {VR_ALREADY_JOINED,            unavailable(EIO)},
  {VR_NAME_MATCHES_DC,           unavailable(EIO)},
  {VR_INVALID_CONTAINER,         unavailable(EIO)},
  {VR_GP_NOT_FOUND,              unavailable(EIO)},
  {VR_ZONE_ACCESS,               refused(L::AuthErr, L::PermDenied, L::PermDenied)},
  {VR_OUTBOUND_TRUST,            unavailable(EIO)},
  {VR_NO_MEMORY,                 tryAgain(ENOMEM)},
  {VR_ACCOUNT_DISABLED,          refused(L::AuthErr, L::PermDenied, L::PermDenied)},
  {VR_POLICY_RESTRICTION,        refused(L::AuthErr, L::PermDenied, L::PermDenied)},
  {VR_NO_SUCH_ATTRIBUTE,         unavailable(EIO)},
  {VR_NO_SUCH_OBJECT,            notFound()},
  {VR_BAD_PARAMETER,             unavailable(EIO)},
  {VR_IN_PROGRESS,               tryAgain(EAGAIN)},
  {VR_NO_DNS_SERVER,             unavailable(ENETUNREACH)},
  {VR_LOGON_FAILURE,             refused(L::AuthErr, L::AuthErr, L::AuthTokRecoveryErr)},
  {VR_COMPUTER_OBJECT_ATTENTION, unavailable(EIO)},
  {VR_DAEMON_NOT_RUNNING,        unavailable(ECONNREFUSED)},
  {VR_BAD_DATA,                  unavailable(EIO)},
  {VR_LOGON_HOURS,               refused(L::AuthErr, L::PermDenied, L::PermDenied)},
  {VR_WORKSTATION_LOGON,         refused(L::AuthErr, L::PermDenied, L::PermDenied)},
  {VR_NO_MORE,                   notFound()},
  {VR_IO_ERROR,                  unavailable(EIO)},
  {VR_TRY_AGAIN,                 tryAgain(EAGAIN)},
  {VR_NOT_GROUP_MEMBER,          refused(L::AuthErr, L::PermDenied, L::PermDenied)},
  {VR_FIPS_NON_COMPLIANT,        unavailable(EIO)},
  {VR_NAME_BLOCKED,              notFound()},
};

#define CLASS(name) #name, isA<name>
extern constexpr ExceptionRow kExceptionRows[25] = {
  {CLASS(NotFoundException),         "", 0,                                             notFound()},
  {CLASS(EndOfListException),        "", 0,                                             notFound()},
  {CLASS(TimeoutException),          "", 0,                                             tryAgain(EAGAIN)},
  {CLASS(ConnectionBrokenException), "", 0,                                             tryAgain(EAGAIN)},
  {CLASS(TryAgainException),         "", 0,                                             tryAgain(EAGAIN)},
  {CLASS(BufferFullException),       "", 0,                                             tryAgain(EAGAIN)},
  // This process is out of descriptors or memory; the daemon may be fine.
  {CLASS(IOException),               "ipc socket create", 0,                            tryAgain(EMFILE)},
  {CLASS(IOException),               "ipc socket connect timed out", 0,                 tryAgain(EAGAIN)},
  {CLASS(IOException),               "ipc socket connect", EAGAIN,                      tryAgain(EAGAIN)},
  {CLASS(IOException),               "ipc socket connect", EACCES,                      programRefused()},
  {CLASS(IOException),               "", 0,                                             unavailable(EIO)},
  {CLASS(SystemException),           "Unsuccesful IPC execute: not authorized", 0,      programRefused()},
  {CLASS(SystemException),           "client failed to provide correct credentials", 0, programRefused()},
  {CLASS(SystemException),           "", 0,                                             unavailable(EIO)},
  {CLASS(AlreadyException),          "", 0,                                             unavailable(EIO)},
  {CLASS(BadDataException),          "", 0,                                             unavailable(EIO)},
  {CLASS(EndOfFileException),        "", 0,                                             unavailable(EIO)},
  {CLASS(IPCException),              "", 0,                                             unavailable(EIO)},
  {CLASS(QueueInterrupted),          "", 0,                                             tryAgain(EAGAIN)},
  {CLASS(Base_Exception),            "", 0,                                             unavailable(EIO)},
  {CLASS(BaseException),             "", 0,                                             unavailable(EIO)},
  {CLASS(ZKTException),              "", 0,                                             unavailable(EIO)},
  {CLASS(VESKException),             "", 0,                                             unavailable(EIO)},
  {CLASS(std::bad_alloc),            "", 0,                                             tryAgain(ENOMEM)},
  {CLASS(std::exception),            "", 0,                                             unavailable(EIO)},
};
#undef CLASS
// clang-format on

namespace {

constexpr bool everyRowIsAtItsIndex() {
  for (size_t i = 0; i < std::size(kResultRows); ++i)
    if (kResultRows[i].result != static_cast<ValidationResult>(i)) return false;
  return true;
}
static_assert(everyRowIsAtItsIndex());

}  // namespace

}  // namespace vesk
