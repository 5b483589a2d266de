/// Ties a session to a call of a client. Internal.
#pragma once

#include <fokrazo/session.h>

namespace vesk {

/// While it exists, the session's operations obey the call's limits and record their progress in it.
class CallScope {
 public:
  CallScope(LocalRpcSession& session, CallProgress& call) : m_session(session) {
    session.m_call = &call;
    session.m_lastResult = VR_NO_REPLY_YET;
  }
  ~CallScope() { m_session.m_call = nullptr; }
  CallScope(const CallScope&) = delete;
  CallScope& operator=(const CallScope&) = delete;

  /// Whether the last reply began with a result.
  bool isStatusReadable() const { return m_session.m_isStatusReadable; }

 private:
  LocalRpcSession& m_session;
};

}  // namespace vesk
