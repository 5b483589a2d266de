#include "cli/daemon.h"

#include <utility>

#include <fokrazo/error_util.h>
#include <fokrazo/session.h>
#include "cli/exit_status.h"

namespace cli {

Daemon::Daemon(std::string socketPath) : m_socketPath(std::move(socketPath)) {}
Daemon::~Daemon() = default;

vesk::LocalRpcSession& Daemon::session() {
  if (m_session) return *m_session;
  boost::scoped_ptr<vesk::LocalRpcSession> session(new vesk::LocalRpcSession(m_socketPath, false, false));
  try {
    session->reConnect(true);
  } catch (const VESKException& error) {
    throw NoDaemonError("no daemon at " + m_socketPath + ": " + error.what());
  }
  m_session.swap(session);
  return *m_session;
}

}  // namespace cli
