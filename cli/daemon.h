/// The tool's way to the daemon.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>

#include <fokrazo/client.h>
#include "cli/failure.h"

namespace cli {

/// How the daemon is reached, from the options of the command line.
struct DaemonOptions {
  std::string socketPath;
  std::chrono::milliseconds deadline;
  std::optional<uid_t> peer;  // the user that the daemon must run as; empty: any, but root for passwords
};

/// The clients of a run. They connect on first use.
class Daemon {
 public:
  explicit Daemon(DaemonOptions options);

  vesk::Client& client();
  /// For requests with a password: unless another user was named, the daemon must run as root.
  /// @throws CallFailure no such daemon answers
  vesk::Client& clientForSecrets();
  const std::string& socketPath() const { return m_options.socketPath; }

  /// Throws a failed call about `subject`.
  /// @throws CallFailure
  void require(const vesk::CallStatus& call, const std::string& subject = "") const;
  /// Returns the value of a result. @throws CallFailure there is none
  template <class T>
  T& require(const vesk::CallResult<T>& result, const std::string& subject = "") const {
    require(result.status(), subject);
    return *result;
  }
  /// Runs `task` with a session, as vesk::Client::call. Returns the status of the daemon's last reply, a
  /// success.
  /// @throws CallFailure
  template <class Task>
  vesk::CallStatus ask(const char* operation, vesk::Client::Repeat repeat, const std::string& subject,
                       Task task) {
    vesk::CallStatus status = client().call(operation, repeat, task);
    require(status, subject);
    return status;
  }

 private:
  vesk::ClientOptions clientOptions(std::optional<uid_t> peer) const;

  const DaemonOptions m_options;
  std::optional<vesk::Client> m_client;
  std::optional<vesk::Client> m_clientForSecrets;
};

}  // namespace cli
