#include "cli/failure.h"

#include <cerrno>
#include <cstring>
#include <iterator>

#include <fokrazo/session.h>
#include <fokrazo/utf8.h>
#include "cli/shown.h"

namespace cli {

namespace {

using namespace vesk;

struct OutcomeRow {
  const char* id;
  ExitStatus status;
  const char* meaning;  // null: the daemon's own result says it; "@" is the daemon's socket
  const char* advice;
};

// Row i belongs to outcome i.
constexpr OutcomeRow kOutcomes[] = {
    {"success", kFound, "done", ""},
    {"not-found", kRefused, nullptr, ""},
    {"refused", kRefused, nullptr, ""},
    {"unavailable", kFailed, nullptr, "'fokrazo doctor' looks for the cause; the daemon's log has details"},
    {"daemon-away", kNoDaemon, "the daemon at @ cannot be reached",
     "start it; if it runs, name its socket with --socket; 'fokrazo doctor' looks for the cause"},
    {"deadline-passed", kNoDaemon, "the daemon at @ did not answer in time",
     "try again, with more time (--timeout); 'fokrazo doctor' looks for the cause"},
    {"cancelled", kFailed, "cancelled", ""},
    {"untrusted-peer", kNoDaemon,
     "the process at @ runs as another user than expected; nothing was sent to it",
     "find out which process it is ('fokrazo doctor'); --peer-uid names another user to trust"},
    {"malformed-reply", kFailed, "the daemon at @ sent a reply that cannot be read",
     "check that it is the daemon and of a matching version, and restart it; its log has details"},
    {"outcome-unknown", kFailed, "the daemon did not answer: the change may have been made",
     "look whether it was made before you try again"},
    {"local-failure", kFailed, "this process has no memory or descriptors left, or cannot use the socket @",
     "close other programs, or raise the limits ('ulimit -a' shows them)"},
};

const OutcomeRow& rowOf(CallOutcome outcome) {
  const auto index = static_cast<size_t>(outcome);
  return kOutcomes[index < std::size(kOutcomes) ? index : std::size(kOutcomes) - 1];
}

// What "not found" means; otherwise the daemon's result says it.
constexpr struct {
  const char* operation;
  const char* meaning;
} kMissing[] = {
    {"user", "there is no such user"},
    {"group", "there is no such group"},
    {"object", "there is no such user or group"},
    {"shadow", "there is no such user with a Unix profile"},
    {"search", "there is no such object to search"},
    {"fetch", "there is no such object"},
    {"authenticate", "there is no such user"},
    {"change password", "there is no such user"},
    {"set password", "there is no such user"},
};

// What to do about a result of the daemon.
constexpr struct {
  ValidationResult result;
  const char* advice;
} kResultAdvice[] = {
    {VR_INVALID_PASSWORD, "check the keyboard layout and Caps Lock, and try again"},
    {VR_LOGON_FAILURE, "check the name, the keyboard layout and Caps Lock, and try again"},
    {VR_ACCOUNT_LOCKED, "wait, or have an administrator of the domain unlock it"},
    {VR_PASSWORD_EXPIRED, "change it: fokrazo passwd USER"},
    {VR_PASSWORD_POLICY, "choose a longer or more varied password that was not used before"},
    {VR_PASSWORD_REJECTED, "choose a longer or more varied password that was not used before"},
    {VR_ACCOUNT_EXPIRED, "have an administrator of the domain extend it"},
    {VR_ACCOUNT_DISABLED, "have an administrator of the domain enable it"},
    {VR_INSUFFICIENT_PERMISSION, "run it as root, or as a user with that right"},
    {VR_PROCESS_AUTH_FAILED, "run it as root, or as a user with that right"},
    {VR_NOT_JOINED, "join this machine to its domain"},
    {VR_JOINED_ELSEWHERE, "join this machine to its domain again"},
    {VR_IN_PROGRESS, "try again in a moment"},
    {VR_TRY_AGAIN, "try again in a moment"},
    {VR_BAD_PARAMETER, "check the arguments; 'fokrazo help COMMAND' describes them"},
};

bool isOf(const CallStatus& call, const char* operation) {
  return std::string(call.operation) == operation;
}

bool hasResult(const CallStatus& call) {
  return call.result != VR_NO_REPLY_YET && call.result != VR_SUCCESS;
}

bool isPasswordChange(const CallStatus& call) {
  return isOf(call, "change password") || isOf(call, "set password");
}

bool cannotConnect(const CallStatus& call) {
  return call.outcome == CallOutcome::Refused && call.step <= CallStep::Connecting;
}

// The daemon's result, and its words if they add something.
std::string resultText(const CallStatus& call) {
  const std::string text = LocalRpcSession::errorString(call.result);
  return call.text.empty() || call.text == text ? text : text + ": " + call.text;
}

const char* meaningWithoutReply(const CallStatus& call) {
  if (cannotConnect(call)) return "this user may not open the daemon's socket @";
  if (call.outcome == CallOutcome::Refused) return "the daemon refuses this user's request";
  return call.outcome == CallOutcome::NotFound ? "not found" : "the daemon cannot answer";
}

// One of the texts above, "@" for the socket; null if the daemon's result says it.
const char* fixedMeaningOf(const CallStatus& call) {
  if (call.outcome == CallOutcome::OutcomeUnknown && isPasswordChange(call))
    return "the daemon did not answer: the password may have been changed";
  if (call.outcome == CallOutcome::DaemonAway && call.step == CallStep::NotStarted)
    return "the daemon at @ failed a moment ago, and was not asked again so soon";
  if (const char* meaning = rowOf(call.outcome).meaning) return meaning;
  if (call.outcome == CallOutcome::NotFound)
    for (const auto& row : kMissing)
      if (isOf(call, row.operation)) return row.meaning;
  return hasResult(call) ? nullptr : meaningWithoutReply(call);
}

std::string adviceOf(const CallStatus& call) {
  if (call.outcome == CallOutcome::OutcomeUnknown && isPasswordChange(call))
    return "try to log in with the new one";
  if (cannotConnect(call))
    return "'fokrazo doctor' shows who may; chmod a+rw on the socket gives every user access";
  if (call.outcome == CallOutcome::Refused && !hasResult(call))
    return "run it as root, or as a user with that right";
  if (hasResult(call))
    for (const auto& row : kResultAdvice)
      if (row.result == call.result) return row.advice;
  return rowOf(call.outcome).advice;
}

std::string withSocket(std::string text, const std::string& path) {
  const size_t at = text.find('@');
  return at == std::string::npos ? text : text.replace(at, 1, path);
}

// Such as "user lquispe".
std::string nameOf(const CallStatus& call, const std::string& subject) {
  return subject.empty() ? call.operation : call.operation + (' ' + shown(subject));
}

constexpr const char* kSteps[] = {"not-started", "waiting-for-session", "connecting", "authenticating",
                                  "sending",     "receiving",           "reading"};

}  // namespace

UsageError::UsageError(const std::string& message)
    : Failure(kUsage, message, "'fokrazo help' lists the commands, 'fokrazo help COMMAND' describes one") {}

UnreadableError::UnreadableError(const std::string& name)
    : Failure(kFailed, name + " cannot be read: " + strerror(errno)) {}

std::string meaningOf(const CallStatus& call, const std::string& socketPath) {
  const char* meaning = fixedMeaningOf(call);
  return vesk::withoutTerminalControls(meaning ? withSocket(meaning, socketPath) : resultText(call));
}

ExitStatus exitStatusOf(const CallStatus& call) {
  return cannotConnect(call) ? kNoDaemon : rowOf(call.outcome).status;
}

const char* idOf(CallOutcome outcome) {
  return rowOf(outcome).id;
}

const char* idOf(CallStep step) {
  const auto index = static_cast<size_t>(step);
  return index < std::size(kSteps) ? kSteps[index] : "";
}

CallFailure::CallFailure(const CallStatus& call, const std::string& subject, const std::string& socketPath)
    : Failure(exitStatusOf(call), nameOf(call, subject) + ": " + meaningOf(call, socketPath), adviceOf(call)),
      m_call(call) {}

}  // namespace cli
