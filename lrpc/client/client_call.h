/// One call of a client, from its deadline to its status. Internal.
#pragma once

#include <exception>
#include <functional>

#include <fokrazo/call_status.h>
#include <fokrazo/client_options.h>
#include <fokrazo/session.h>
#include "lrpc/client/client_core.h"
#include "lrpc/session/call_scope.h"
#include "lrpc/wire/call_progress.h"

namespace vesk {

/// What a call asks for.
struct Operation {
  const char* name;
  bool isRepeatable = true;          ///< may be sent again after the daemon has had it
  bool isChange = false;             ///< if no answer comes, the outcome is unknown
  bool needsNewConnection = false;   ///< so that it does not fail on one that the daemon has just closed
  bool needsSameConnection = false;  ///< as the call before it
};

/// Runs tasks with a session of the client within one deadline. Belongs to one thread.
class ClientCall {
 public:
  /// The deadline begins.
  ClientCall(ClientCore& core, const Operation& operation, const CallOptions& options)
      : ClientCall(core, operation, options, core.deadlineOf(options)) {}
  /// Part of a call that has begun.
  ClientCall(ClientCore& core, const Operation& operation, const CallOptions& options, Deadline deadline);

  /// Borrows a session, and lends it to `task(session)`. Returns what became of it.
  /// @throws what the task throws, but for the exceptions of the library and std::bad_alloc
  template <class Task>
  CallStatus run(Task task) {
    return begin() ? runWith(m_lease.session(), task) : m_status;
  }
  /// The same with a session that the caller holds.
  template <class Task>
  CallStatus runWith(LocalRpcSession& session, Task task) {
    const CallScope scope(session, m_progress);
    try {
      task(session);
      takeReply(session, scope);
    } catch (const VESKException& error) {
      takeFailure(session, &error);
    } catch (const std::bad_alloc&) {
      takeFailure(session, nullptr);
    }
    settle(session);
    return m_status;
  }

  /// Asks the breaker; false if it refuses. status() then says so.
  bool admit();
  /// As admit, and waits for a session. False if there is none; status() says why.
  bool begin();
  SessionPool::Lease takeLease() { return std::move(m_lease); }
  const CallStatus& status() const { return m_status; }
  /// What the daemon said beside its status block.
  void setText(std::string text) { m_status.text = std::move(text); }
  CallProgress& progress() { return m_progress; }

 private:
  void takeReply(LocalRpcSession& session, const CallScope& scope);
  void takeFailure(LocalRpcSession& session, const VESKException* error);
  void takeRefusal(const LocalRpcSession& session, const VESKException* error);
  void takeResult(const LocalRpcSession& session);
  CallOutcome stopOutcome() const;
  CallOutcome failureOutcome(const VESKException* error) const;
  void settle(LocalRpcSession& session);
  bool isHang() const;

  ClientCore& m_core;
  const Operation m_operation;
  Deadline::Clock::time_point m_start;  // since when it has a session
  const bool m_isEvenIfAway;
  CallProgress m_progress;
  CallStatus m_status;
  Breaker::Ticket m_ticket = Breaker::kUncounted;
  SessionPool::Lease m_lease;
};

}  // namespace vesk
