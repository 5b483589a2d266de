/// Keeps a session to one thread. Internal.
#pragma once

#include <pthread.h>

#include <fokrazo/session.h>

namespace vesk {

/// While it lives, the session is the calling thread's, and every other thread that uses it gets an
/// exception. A thread may hold a session any number of times. A few atomic instructions, no lock.
class SessionHold {
 public:
  /// @throws SystemException (EBUSY) another thread holds the session.
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
