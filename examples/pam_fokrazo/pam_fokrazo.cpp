// A login module: the directory's passwords and accounts for every program that uses PAM. Add it to a
// service's file in /etc/pam.d, in lines of the types auth, account and password.
//
// All tasks of the process share one client. No descriptor stays open in the program between tasks.

#include <pwd.h>
#include <security/pam_ext.h>
#include <security/pam_modules.h>

#include <chrono>
#include <ctime>
#include <iterator>
#include <vector>

#include "../entry_point.h"

namespace {

using namespace example;
using vesk::CallOutcome;
using vesk::CallStatus;
using vesk::LoginAnswer;
using vesk::Outcome;
using vesk::Shredder;
using vesk::ValidationResult;

// In the order of LoginAnswer.
constexpr int kCodes[] = {
    PAM_SUCCESS,      PAM_USER_UNKNOWN,         PAM_AUTH_ERR,
    PAM_MAXTRIES,     PAM_CRED_INSUFFICIENT,    PAM_AUTHINFO_UNAVAIL,
    PAM_ACCT_EXPIRED, PAM_NEW_AUTHTOK_REQD,     PAM_PERM_DENIED,
    PAM_AUTHTOK_ERR,  PAM_AUTHTOK_RECOVERY_ERR, PAM_TRY_AGAIN,
};
static_assert(std::size(kCodes) == static_cast<size_t>(LoginAnswer::TryAgain) + 1);

int toCode(LoginAnswer answer) {
  return kCodes[static_cast<int>(answer)];
}

// --- Questions to the daemon ---

// How long a login waits for its account; and for the directory's word on a password, which may have to come
// from a distant domain controller. Login programs give up after one or two minutes.
constexpr std::chrono::seconds kDeadline(5);
constexpr std::chrono::seconds kPasswordDeadline(50);

vesk::ClientOptions clientOptions() {
  vesk::ClientOptions options;
  options.deadline = kDeadline;
  options.refuseOwnProcess = true;
  return options;
}

// It remembers from one task to the next that the daemon is away.
vesk::Client& client() {
  return clientOf(clientOptions);
}

vesk::CallOptions patiently() {
  vesk::CallOptions options;
  options.deadline = kPasswordDeadline;
  return options;
}

// What became of a question; result is the daemon's or VR_NO_REPLY_YET, and answer the module's.
struct Verdict {
  CallOutcome outcome = CallOutcome::Unavailable;
  ValidationResult result = vesk::VR_NO_REPLY_YET;
  vesk::Answer answer;
};

// The user's id, from all of the host's name services in their order.
uid_t hostUid(const std::string& user) {
  constexpr size_t kLargestEntry = 1 << 20;
  passwd entry, *found = nullptr;
  std::vector<char> buffer(1 << 10);
  int error;
  while ((error = getpwnam_r(user.c_str(), &entry, buffer.data(), buffer.size(), &found)) == ERANGE &&
         buffer.size() < kLargestEntry)
    buffer.resize(2 * buffer.size());
  if (!found) fail(error == 0 ? vesk::VR_NOT_FOUND : vesk::VR_SYSTEM_ERROR);
  return found->pw_uid;
}

// The directory's account, if the login gets that account: the host may have its own user of that name.
vesk::CallResult<const vesk::User> accountOf(const std::string& user) {
  if (!vesk::isSafeAccountKey(user) || user == kRoot) fail(vesk::VR_NOT_FOUND);
  auto account = client().user(user, vesk::UNIX_ONLY);
  const uid_t directoryUid = account.value().getId();
  if (directoryUid == 0 || directoryUid != hostUid(user)) fail(vesk::VR_NOT_FOUND);
  return account;
}

// Calls `question` with the account; it returns a status.
template <class Question>
Verdict ask(const std::string& user, Question question) {
  Verdict verdict;
  verdict.answer = answer([&] {
    const auto account = accountOf(user);
    const CallStatus status = question(*account);
    verdict.outcome = status.outcome;
    verdict.result = status.result;
    status.throwIfFailed();
  });
  answer([] { client().closeIdle(); });
  return verdict;
}

Verdict validate(const std::string& user, const Shredder& password) {
  return ask(user, [&](const vesk::User&) { return client().authenticate(user, password, patiently()); });
}

Verdict change(const std::string& user, const Shredder& old, const Shredder& wanted) {
  return ask(user,
             [&](const vesk::User&) { return client().changePassword(user, old, wanted, patiently()); });
}

Verdict stateOf(const std::string& user, bool isPasswordExpired) {
  return ask(user, [&](const vesk::User& account) {
    CallStatus status;
    status.result = vesk::AccountState(account, time(nullptr)).result();
    if (status.result == vesk::VR_SUCCESS && isPasswordExpired) status.result = vesk::VR_PASSWORD_EXPIRED;
    if (status.result != vesk::VR_SUCCESS) status.outcome = CallOutcome::Refused;
    return status;
  });
}

// --- Conversation with the user ---

// The conversation of a non-blocking program may not be over yet.
int codeOf(int conversation) {
  return conversation == PAM_CONV_AGAIN ? PAM_INCOMPLETE : conversation;
}

// Gets the secret from PAM, which prompts if necessary and keeps it for other modules.
int getSecret(pam_handle_t* handle, int item, Shredder& secret) {
  const char* text = nullptr;
  const int rc = pam_get_authtok(handle, item, &text, nullptr);
  if (rc == PAM_SUCCESS) secret.assign(text);
  return codeOf(rc);
}

// Shows the reason for a refusal, unless it would reveal whether the name or the password is wrong.
void tell(pam_handle_t* handle, int flags, const Verdict& verdict) {
  const bool isWrong =
      verdict.result == vesk::VR_INVALID_PASSWORD || verdict.result == vesk::VR_LOGON_FAILURE;
  const bool isRefused = vesk::answerOf(verdict.result).outcome == Outcome::Refused;
  if ((flags & PAM_SILENT) || isWrong) return;
  answer([&] {
    if (verdict.outcome == CallOutcome::OutcomeUnknown)
      pam_error(handle, "The password may have been changed; try to log in with the new one");
    else if (isRefused)
      pam_error(handle, "%s", vesk::LocalRpcSession::errorString(verdict.result).c_str());
  });
}

// --- A note from one task to the next: the password was correct but has expired ---

constexpr char kExpired[] = "fokrazo_password_expired";

bool isMarkedExpired(pam_handle_t* handle) {
  const void* mark = nullptr;
  return pam_get_data(handle, kExpired, &mark) == PAM_SUCCESS && mark;
}

int markExpired(pam_handle_t* handle, bool isExpired) {
  return pam_set_data(handle, kExpired, isExpired ? const_cast<char*>(kExpired) : nullptr, nullptr);
}

// --- The tasks ---

int authenticate(pam_handle_t* handle, int flags, const std::string& user) {
  Shredder password;
  const int rc = getSecret(handle, PAM_AUTHTOK, password);
  if (rc != PAM_SUCCESS) return rc;
  if (password.empty()) return PAM_AUTH_ERR;  // some directories accept an empty password as a guest's login
  const Verdict verdict = validate(user, password);
  const bool isExpired = verdict.result == vesk::VR_PASSWORD_EXPIRED;
  const int marked = markExpired(handle, isExpired);
  if (isExpired && marked == PAM_SUCCESS) return PAM_SUCCESS;  // the account task will request a new password
  tell(handle, flags, verdict);
  return toCode(verdict.answer.authenticate);
}

int checkAccount(pam_handle_t* handle, int flags, const std::string& user) {
  const Verdict state = stateOf(user, isMarkedExpired(handle));
  tell(handle, flags, state);
  return toCode(state.answer.account);
}

// Both rounds. The first checks whether the second is possible, and asks for the old password.
int changePassword(pam_handle_t* handle, int flags, const std::string& user) {
  const bool isFirstRound = flags & PAM_PRELIM_CHECK;
  const Verdict state = stateOf(user, isMarkedExpired(handle));
  const bool isExpired = state.result == vesk::VR_PASSWORD_EXPIRED;
  const bool isAway =
      state.answer.outcome == Outcome::TryAgain || state.answer.outcome == Outcome::Unavailable;
  if (isFirstRound && isAway) return PAM_TRY_AGAIN;
  if (state.answer.outcome != Outcome::Success && !isExpired) {
    tell(handle, flags, state);
    return toCode(state.answer.password);
  }
  if ((flags & PAM_CHANGE_EXPIRED_AUTHTOK) && !isExpired) return PAM_IGNORE;

  Shredder old, wanted;
  int rc = getSecret(handle, PAM_OLDAUTHTOK, old);
  if (rc != PAM_SUCCESS || isFirstRound) return rc;
  rc = getSecret(handle, PAM_AUTHTOK, wanted);  // PAM asks twice and compares
  if (rc != PAM_SUCCESS) return rc;
  const Verdict verdict = change(user, old, wanted);
  if (verdict.answer.outcome == Outcome::Success) markExpired(handle, false);
  tell(handle, flags, verdict);
  return toCode(verdict.answer.password);
}

// Runs a task for the user who logs in. Only a cancellation is thrown into PAM.
template <class Task>
int run(pam_handle_t* handle, int flags, Task task) {
  try {
    const char* user = nullptr;
    const int rc = pam_get_user(handle, &user, nullptr);
    return rc == PAM_SUCCESS ? task(handle, flags, std::string(user)) : codeOf(rc);
  } catch (const std::exception&) {  // not `...`: a cancellation in the conversation must pass
    return PAM_BUF_ERR;
  }
}

}  // namespace

extern "C" {

int pam_sm_authenticate(pam_handle_t* handle, int flags, int /*argc*/, const char** /*argv*/) {
  return run(handle, flags, authenticate);
}

// There are no credentials besides the password.
int pam_sm_setcred(pam_handle_t* /*handle*/, int /*flags*/, int /*argc*/, const char** /*argv*/) {
  return PAM_SUCCESS;
}

int pam_sm_acct_mgmt(pam_handle_t* handle, int flags, int /*argc*/, const char** /*argv*/) {
  return run(handle, flags, checkAccount);
}

int pam_sm_chauthtok(pam_handle_t* handle, int flags, int /*argc*/, const char** /*argv*/) {
  const int code = run(handle, flags, changePassword);
  // In the second round PAM_TRY_AGAIN would mean that the first has failed.
  return code == PAM_TRY_AGAIN && !(flags & PAM_PRELIM_CHECK) ? PAM_AUTHTOK_ERR : code;
}
}
