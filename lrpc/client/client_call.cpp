#include "lrpc/client/client_call.h"

#include <algorithm>
#include <cerrno>

#include <fokrazo/error_util.h>
#include <fokrazo/ipc_exception.h>
#include <fokrazo/ipc_opcode.h>
#include <fokrazo/outcome.h>

namespace vesk {

namespace {

// A daemon that keeps a call waiting for less time may only be slow.
constexpr std::chrono::seconds kHang(1);

// What the daemon's own result means for a call.
CallOutcome outcomeOf(ValidationResult result) {
  switch (answerOf(result).outcome) {
    case Outcome::Success:
      return CallOutcome::Success;
    case Outcome::NotFound:
      return CallOutcome::NotFound;
    case Outcome::Refused:
      return CallOutcome::Refused;
    case Outcome::TryAgain:
    case Outcome::Unavailable:
      break;
  }
  return CallOutcome::Unavailable;
}

CallOutcome connectOutcome(int error) {
  switch (error) {
    case EACCES:
    case EPERM:
      return CallOutcome::Refused;
    case EMFILE:
    case ENFILE:
    case ENOMEM:
    case ENOBUFS:
    case 0:  // not even tried
      return CallOutcome::LocalFailure;
    default:
      return CallOutcome::DaemonAway;
  }
}

template <class Exception>
bool isA(const VESKException* error) {
  return dynamic_cast<const Exception*>(error) != nullptr;
}

}  // namespace

ClientCall::ClientCall(ClientCore& core, const Operation& operation, const CallOptions& options,
                       Deadline deadline)
    : m_core(core),
      m_operation(operation),
      m_start(Deadline::Clock::now()),
      m_isEvenIfAway(options.evenIfAway) {
  m_progress.deadline = deadline;
  m_progress.cancellation = options.cancellation;
  m_progress.isRepeatable = operation.isRepeatable;
  m_progress.needsNewConnection = operation.needsNewConnection;
  m_progress.needsSameConnection = operation.needsSameConnection;
  m_progress.refusesOwnProcess = core.options.refuseOwnProcess;
  m_status.operation = operation.name;
}

bool ClientCall::admit() {
  const std::optional<Breaker::Ticket> ticket = m_isEvenIfAway ? Breaker::kUncounted : m_core.breaker.admit();
  if (!ticket) m_status.outcome = CallOutcome::DaemonAway;
  m_ticket = ticket.value_or(Breaker::kUncounted);
  return ticket.has_value();
}

bool ClientCall::begin() {
  if (!admit()) return false;
  m_core.sweep();
  try {
    m_lease = m_core.pool.borrow(m_progress, m_isEvenIfAway ? nullptr : &m_core.breaker);
  } catch (const std::bad_alloc&) {
    m_status.outcome = CallOutcome::LocalFailure;
    return false;
  }
  m_start = Deadline::Clock::now();
  if (m_lease) return true;
  m_status.step = m_progress.step;
  m_status.outcome = m_progress.stop == CallProgress::Stop::None ? CallOutcome::DaemonAway : stopOutcome();
  return false;
}

void ClientCall::takeReply(LocalRpcSession& session, const CallScope& scope) {
  m_status.step = m_progress.step;
  if (session.lastResult() == VR_NO_REPLY_YET) {  // a reply without a status block
    m_status.outcome = CallOutcome::Success;
  } else if (!scope.isStatusReadable()) {
    m_status.outcome = CallOutcome::MalformedReply;
  } else {
    takeResult(session);
  }
}

void ClientCall::takeResult(const LocalRpcSession& session) {
  m_status.result = session.lastResult();
  m_status.ntStatus = session.statusDetail();
  if (m_status.text.empty()) m_status.text = session.statusMessage();
  const bool isEnd = m_status.result != VR_SUCCESS && session.statusCode() == END_OF_LIST;
  m_status.outcome = isEnd ? CallOutcome::NotFound : outcomeOf(m_status.result);
}

void ClientCall::takeFailure(LocalRpcSession& session, const VESKException* error) {
  m_status.step = m_progress.step;
  if (error) m_status.text = error->what();
  const ValidationResult result = session.lastResult();
  if (m_progress.stop != CallProgress::Stop::None)
    m_status.outcome = stopOutcome();
  else if (result == VR_NO_REPLY_YET || m_progress.isAuthenticating)
    m_status.outcome = failureOutcome(error);
  else if (result == VR_SUCCESS)
    m_status.outcome = error ? CallOutcome::MalformedReply : CallOutcome::LocalFailure;
  else
    takeRefusal(session, error);
}

// The daemon's own words say more than those of the session.
void ClientCall::takeRefusal(const LocalRpcSession& session, const VESKException* error) {
  if (!isA<IPCException>(error) && !session.statusMessage().empty()) m_status.text.clear();
  takeResult(session);
}

CallOutcome ClientCall::stopOutcome() const {
  switch (m_progress.stop) {
    case CallProgress::Stop::DeadlinePassed:
      return CallOutcome::DeadlinePassed;
    case CallProgress::Stop::Cancelled:
      return CallOutcome::Cancelled;
    case CallProgress::Stop::UntrustedPeer:
      return CallOutcome::UntrustedPeer;
    case CallProgress::Stop::OwnProcess:
    case CallProgress::Stop::ConnectionLost:
    case CallProgress::Stop::None:
      break;
  }
  return CallOutcome::DaemonAway;
}

// The outcome when the daemon returned no result.
CallOutcome ClientCall::failureOutcome(const VESKException* error) const {
  if (!error) return CallOutcome::LocalFailure;
  if (isA<ConnectionBrokenException>(error)) return CallOutcome::DaemonAway;
  if (m_progress.step == CallStep::Authenticating && isA<SystemException>(error)) return CallOutcome::Refused;
  if (m_progress.step <= CallStep::Connecting) return connectOutcome(m_progress.error);
  if (m_progress.step <= CallStep::Sending && !m_progress.isAuthenticating) return CallOutcome::LocalFailure;
  if (!isA<SystemException>(error)) return CallOutcome::MalformedReply;
  return error->rc() == IPC_NOT_AUTHORIZED ? CallOutcome::Refused : CallOutcome::Unavailable;
}

bool ClientCall::isHang() const {
  using std::chrono::milliseconds;
  const auto limit = std::clamp<milliseconds>(m_core.options.deadline, milliseconds(0), kHang);
  return m_progress.stop == CallProgress::Stop::DeadlinePassed && Deadline::Clock::now() - m_start >= limit;
}

// Tells the breaker, and leaves no connection that waits for a reply.
void ClientCall::settle(LocalRpcSession& session) {
  const bool isAnswered = m_progress.step == CallStep::Reading;
  const bool isAway = m_status.outcome == CallOutcome::DaemonAway && m_status.step == CallStep::Connecting &&
                      m_progress.stop == CallProgress::Stop::None;
  if (isAway || isHang()) {
    m_core.breaker.failed(m_ticket);
    m_core.pool.wakeWaiters();
  } else if (isAnswered) {
    m_core.breaker.succeeded();
  }
  if (m_status.result != VR_NO_REPLY_YET || m_status.outcome == CallOutcome::Success) return;
  session.dropConnection();
  if (m_operation.isChange && m_status.step >= CallStep::Receiving &&
      m_status.outcome != CallOutcome::Refused)
    m_status.outcome = CallOutcome::OutcomeUnknown;
}

}  // namespace vesk
