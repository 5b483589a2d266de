#include <fokrazo/call_status.h>

#include <iterator>

#include <fokrazo/session.h>
#include <fokrazo/utf8.h>

namespace vesk {

namespace {

struct OutcomeRow {
  const char* text;
  ValidationResult meaning;  // what modules answer as to this result of the daemon
};

// Row i belongs to outcome i.
constexpr OutcomeRow kOutcomes[] = {
    {"success", VR_SUCCESS},
    {"not found", VR_NOT_FOUND},
    {"refused", VR_INSUFFICIENT_PERMISSION},
    {"the daemon cannot answer now", VR_SYSTEM_ERROR},
    {"the daemon cannot be reached", VR_DAEMON_NOT_RUNNING},
    {"the deadline has passed", VR_TRY_AGAIN},
    {"cancelled", VR_TRY_AGAIN},
    {"the process at the socket is not trusted", VR_SYSTEM_ERROR},
    {"the reply cannot be read", VR_BAD_DATA},
    {"the outcome is unknown: the change may have been made", VR_SYSTEM_ERROR},
    {"this process lacks descriptors or memory", VR_NO_MEMORY},
};
constexpr auto kUnknown = static_cast<size_t>(CallOutcome::LocalFailure);
static_assert(std::size(kOutcomes) == kUnknown + 1);

const OutcomeRow& rowOf(CallOutcome outcome) {
  const auto index = static_cast<size_t>(outcome);
  return kOutcomes[index < std::size(kOutcomes) ? index : kUnknown];
}

}  // namespace

const char* textOf(CallOutcome outcome) noexcept {
  return rowOf(outcome).text;
}

Answer CallStatus::answer() const noexcept {
  const bool isDaemons =
      result != VR_NO_REPLY_YET && result != VR_SUCCESS && outcome != CallOutcome::NotFound;
  return answerOf(isDaemons ? result : rowOf(outcome).meaning);
}

std::string CallStatus::describe() const {
  std::string line = std::string(operation) + ": " + textOf(outcome);
  if (ok()) return line;
  const bool isUnasked = outcome == CallOutcome::NotFound && step == CallStep::NotStarted;
  if (!isUnasked) line += std::string(" (") + textOf(step) + ")";
  const bool isDaemons = result != VR_NO_REPLY_YET && result != VR_SUCCESS;
  const std::string meaning = isDaemons ? LocalRpcSession::errorString(result) : std::string();
  if (isDaemons) line += ": " + meaning;
  if (!text.empty() && text != meaning) line += ": " + withoutTerminalControls(text);
  return line;
}

void CallStatus::throwIfFailed() const {
  if (!ok()) throw CallException(*this);
}

CallException::CallException(const CallStatus& status)
    : VESKException(status.describe().c_str(), "CallException", static_cast<int>(status.outcome)),
      m_status(status) {}

CallException::~CallException() noexcept = default;

}  // namespace vesk
