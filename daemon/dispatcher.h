/// Maps requests to operations.
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include <fokrazo/ipcmessage.h>
#include "daemon/call.h"

namespace brondalt {

/// Carries out the requests of all clients on one back end.
/// Thread-safety: one thread at a time.
class Dispatcher {
 public:
  /// `onStop` is called before the reply to a client's "stop" is sent. `service` must outlive the dispatcher
  /// and its calls.
  Dispatcher(Service& service, std::function<void()> onStop);

  /// Carries a request out; `send` receives the reply, now or later. The result is "bad data" for a malformed
  /// request or an unknown opcode, and "system error" for an operation that throws. The returned call allows
  /// the caller to force a reply.
  ///
  /// With an `answer` nothing is carried out, and the reply is that status, without the values that would
  /// follow a success. Ping and stop, whose replies have no status, and the authentication of a process,
  /// which comes before everything else, are carried out all the same.
  std::weak_ptr<Call> carryOut(std::shared_ptr<Client> client, const vesk::IPCMessage& request,
                               Call::Send send, const std::optional<Status>& answer = {});

 private:
  void stop(Call& call);

  Service& m_service;
  std::function<void()> m_onStop;
};

}  // namespace brondalt
