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

/// The one session of a run, connected when a command first asks for it.
class Daemon {
 public:
  explicit Daemon(std::string socketPath);
  ~Daemon();

  /// A connected session. @throws NoDaemonError
  vesk::LocalRpcSession& session();
  const std::string& socketPath() const { return m_socketPath; }

 private:
  std::string m_socketPath;
  boost::scoped_ptr<vesk::LocalRpcSession> m_session;
};

}  // namespace cli
