/// What became of a call to the daemon.
#pragma once

#include <string>

#include <fokrazo/call_step.h>
#include <fokrazo/error_util.h>
#include <fokrazo/export.h>
#include <fokrazo/outcome.h>
#include <fokrazo/validation_result.h>

namespace vesk {

/// How a call ended. Every call ends in one of these ways, and only the first two say anything about the name
/// that was asked for.
enum class CallOutcome : int {
  Success,         ///< found, or done
  NotFound,        ///< the daemon knows that there is no such object, or no further one
  Refused,         ///< the daemon answered no: a wrong password, a missing right; `result` says which
  Unavailable,     ///< the daemon cannot answer now: no directory, no memory, a fault
  DaemonAway,      ///< nobody listens, or the daemon closed the connection without a reply
  DeadlinePassed,  ///< the time of the call was over
  Cancelled,       ///< by another thread
  UntrustedPeer,   ///< the process at the other end is not the daemon; nothing was sent to it
  MalformedReply,  ///< a reply came that cannot be read
  OutcomeUnknown,  ///< a change was sent and no readable answer came: it may have been made
  LocalFailure,    ///< this process has no descriptors or no memory left
};

/// The outcome in words, such as "the deadline has passed". Constant storage. Thread-safe.
FOKRAZO_API const char* textOf(CallOutcome outcome) noexcept;

/// What became of one call. Thread-safety: a plain value.
struct FOKRAZO_API CallStatus {
  /// Whether the call succeeded, and if not, why.
  CallOutcome outcome = CallOutcome::Success;
  /// What the daemon said; VR_NO_REPLY_YET if it said nothing.
  ValidationResult result = VR_NO_REPLY_YET;
  /// The daemon's detail of its result: the NT status of a login, where it has one, otherwise 0.
  int ntStatus = 0;
  /// Where the call ended.
  CallStep step = CallStep::NotStarted;
  /// What was asked for, such as "user". Constant storage.
  const char* operation = "";
  /// The daemon's words, or those of the failure in this process; for logs. Empty if there is nothing to add.
  /// The daemon's part is not escaped.
  std::string text;

  /// Whether the call succeeded.
  bool ok() const noexcept { return outcome == CallOutcome::Success; }
  explicit operator bool() const noexcept { return ok(); }
  /// What a name-service or login module answers.
  Answer answer() const noexcept;
  /// All of it in one line, for a log or a terminal: "user: the daemon cannot be reached (connecting): ipc
  /// socket connect: …". What a terminal would obey is replaced with "?".
  std::string describe() const;
  /// @throws CallException unless it is a success
  void throwIfFailed() const;
};

/// A call that did not succeed, for those who prefer exceptions. what() is CallStatus::describe, rc() the
/// outcome.
class FOKRAZO_API CallException : public VESKException {
 public:
  /// Keeps a copy of the status.
  explicit CallException(const CallStatus& status);
  ~CallException() noexcept override;
  /// Owned by the exception.
  const CallStatus& status() const noexcept { return m_status; }

 private:
  CallStatus m_status;
};

}  // namespace vesk
