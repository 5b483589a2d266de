/// From a request to its operation.
#pragma once

#include <functional>
#include <memory>

#include <fokrazo/ipcmessage.h>
#include "daemon/call.h"

namespace brondalt {

/// Carries out the requests of all clients against one back end.
/// Thread-safety: one thread at a time.
class Dispatcher {
 public:
  /// `onStop` is called before the reply to a client's "stop" goes out. All must outlive the dispatcher and
  /// its calls.
  Dispatcher(Service& service, std::function<void()> onStop);

  /// Carries a request out; `send` gets its reply, now or later. A request that cannot be read, and an opcode
  /// that no session sends, get a reply of the result "bad data"; an operation that fails with an exception,
  /// "system error". The call is returned so that its reply can be forced.
  std::weak_ptr<Call> carryOut(std::shared_ptr<Client> client, const vesk::IPCMessage& request,
                               Call::Send send);

 private:
  void stop(Call& call);

  Service& m_service;
  std::function<void()> m_onStop;
};

}  // namespace brondalt
