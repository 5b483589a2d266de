/// The tool's connection to the daemon.
#pragma once

#include <sys/types.h>

#include <boost/scoped_ptr.hpp>
#include <optional>
#include <string>

namespace vesk {
class LocalRpcSession;
}

namespace cli {

/// The session of a run, connected on first use.
class Daemon {
 public:
  /// If `peer` is set, the daemon must run as that user.
  Daemon(std::string socketPath, std::optional<uid_t> peer);
  ~Daemon();

  /// A connected session. @throws NoDaemonError
  vesk::LocalRpcSession& session();
  /// A connected session for a request with a password: without `peer` in the constructor, the daemon must
  /// run as root. @throws NoDaemonError
  vesk::LocalRpcSession& sessionForSecrets();
  const std::string& socketPath() const { return m_socketPath; }

 private:
  vesk::LocalRpcSession& connect(std::optional<uid_t> peer);

  std::string m_socketPath;
  std::optional<uid_t> m_peer;
  std::optional<uid_t> m_checkedPeer;  // of m_session
  boost::scoped_ptr<vesk::LocalRpcSession> m_session;
};

}  // namespace cli
