#include "cli/daemon.h"

#include <utility>

namespace cli {

Daemon::Daemon(DaemonOptions options) : m_options(std::move(options)) {}

vesk::ClientOptions Daemon::clientOptions(std::optional<uid_t> peer) const {
  vesk::ClientOptions options;
  options.socketPath = m_options.socketPath;
  options.deadline = m_options.deadline;
  options.trustedPeer = peer;
  return options;
}

vesk::Client& Daemon::client() {
  if (!m_client) m_client.emplace(clientOptions(m_options.peer));
  return *m_client;
}

vesk::Client& Daemon::clientForSecrets() {
  if (!m_clientForSecrets) m_clientForSecrets.emplace(clientOptions(m_options.peer.value_or(0)));
  vesk::CallStatus call = m_clientForSecrets->ping();
  call.operation = "connect";
  require(call);
  return *m_clientForSecrets;
}

void Daemon::require(const vesk::CallStatus& call, const std::string& subject) const {
  if (!call.ok()) throw CallFailure(call, subject, m_options.socketPath);
}

}  // namespace cli
