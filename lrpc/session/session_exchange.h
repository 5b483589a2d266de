/// The step that all operations of a session have in common. Internal.
#pragma once

#include <fokrazo/ipcmessage.h>
#include <fokrazo/session.h>

namespace vesk {

/// One exchange that may be made twice, and the result that opens its reply.
inline ValidationResult ask(LocalRpcSession& session, IPCRequest& request, IPCReply& reply) {
  session.executeWithRetry(request, reply, true);
  return session.updateVRErrInfo(reply);
}

/// One exchange that must not happen twice, and the result that opens its reply.
inline ValidationResult askOnce(LocalRpcSession& session, IPCRequest& request, IPCReply& reply) {
  session.execute(request, reply, true);
  return session.updateVRErrInfo(reply);
}

}  // namespace vesk
