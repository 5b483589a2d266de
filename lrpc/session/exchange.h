/// Runs the operations of a session. Internal.
#pragma once

#include <fokrazo/ipcmessage.h>
#include <fokrazo/session.h>
#include "lrpc/session/session_hold.h"

namespace vesk {

/// One operation: a request and its reply.
///
///   Exchange exchange(*this, IPC_OP_RENEW_CREDENTIALS, user);
///   const ValidationResult result = exchange.ask();
///   if (result == VR_SUCCESS) count = exchange.reply.getInt();
///
/// It reserves the session for the calling thread, so that the status fields stay those of its reply. Fields
/// are written directly to the message, without copying secrets.
class Exchange {
 public:
  template <class... Fields>
  Exchange(LocalRpcSession& session, IPC_OPCODE opcode, Fields&&... fields)
      : request(opcode), m_hold(session), m_session(session) {
    static_cast<void>((request += ... += fields));
  }

  /// Sends the request, again if the exchange fails, and returns the result in the reply's status block. The
  /// next field of the reply is the first one after that block.
  /// @throws what LocalRpcSession::executeWithRetry throws
  ValidationResult ask() {
    m_session.executeWithRetry(request, reply, true);
    return m_session.updateVRErrInfo(reply);
  }
  /// The same for a request that must not be carried out twice.
  /// @throws what LocalRpcSession::execute throws
  ValidationResult askOnce() {
    m_session.execute(request, reply, true);
    return m_session.updateVRErrInfo(reply);
  }

  /// The two halves of an attempt, for requests to several sessions at a time. No second attempt is made.
  /// @throws what LocalRpcSession::execute throws
  void send() {
    m_session.reConnect(true);
    m_session.sendRequest(request);
  }
  ValidationResult receive() {
    m_session.receiveReply(reply);
    return m_session.updateVRErrInfo(reply);
  }

  IPCRequest request;
  IPCReply reply;

 private:
  SessionHold m_hold;
  LocalRpcSession& m_session;
};

}  // namespace vesk
