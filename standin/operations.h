/// From a request to its reply.
#pragma once

#include <memory>

#include <fokrazo/ipcmessage.h>

namespace standin {

struct ClientState;
struct Service;

/// Carries a request out and gives the reply. A request that cannot be read, and an opcode that no session
/// sends, get a reply of the result "bad data"; an operation that fails on its own account "system error".
/// Never throws but for want of memory.
std::unique_ptr<vesk::IPCReply> carryOut(Service& service, ClientState& client,
                                         const vesk::IPCMessage& request);

/// A reply that says nothing but that result.
std::unique_ptr<vesk::IPCReply> bareReply(vesk::IPC_OPCODE opcode, vesk::IPC_RESULT result);

}  // namespace standin
