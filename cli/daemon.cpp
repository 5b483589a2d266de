#include "cli/daemon.h"

#include <utility>

#include <fokrazo/error_util.h>
#include <fokrazo/session.h>
#include "cli/exit_status.h"

namespace cli {

Daemon::Daemon(std::string socketPath, std::optional<uid_t> peer)
    : m_socketPath(std::move(socketPath)), m_peer(peer) {}
Daemon::~Daemon() = default;

vesk::LocalRpcSession& Daemon::session() {
  return connect(m_peer);
}

vesk::LocalRpcSession& Daemon::sessionForSecrets() {
  return connect(m_peer.value_or(0));
}

vesk::LocalRpcSession& Daemon::connect(std::optional<uid_t> peer) {
  if (m_session && (!peer || peer == m_checkedPeer)) return *m_session;
  boost::scoped_ptr<vesk::LocalRpcSession> session(new vesk::LocalRpcSession(m_socketPath, false, false));
  if (peer) session->setTrustedPeer(*peer);
  try {
    session->reConnect(true);
  } catch (const VESKException& error) {
    throw NoDaemonError("no daemon at " + m_socketPath + ": " + error.what());
  }
  m_session.swap(session);
  m_checkedPeer = peer;
  return *m_session;
}

}  // namespace cli
