/// Reserves a session for one thread. Internal.
#pragma once

#include <pthread.h>

#include <fokrazo/session.h>

namespace vesk {

/// While it exists, only the calling thread can use the session; any other gets an exception. Holds of one
/// thread nest. Costs a few atomic instructions, no lock.
class SessionHold {
 public:
  /// @throws SystemException (EBUSY) another thread holds the session
  explicit SessionHold(LocalRpcSession& session);
  ~SessionHold() {
    if (m_isOutermost) m_session.m_holder.store(pthread_t{}, std::memory_order_release);
  }
  SessionHold(const SessionHold&) = delete;
  SessionHold& operator=(const SessionHold&) = delete;

 private:
  LocalRpcSession& m_session;
  bool m_isOutermost;
};

}  // namespace vesk
