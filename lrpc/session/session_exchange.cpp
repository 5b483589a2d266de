// Exchanging a request and its reply: execute, the second attempt, and the status block.

#include <fokrazo/ipcmessage.h>
#include <fokrazo/log.h>
#include <fokrazo/session.h>
#include "lrpc/session/session_hold.h"
#include "util/error/throw.h"
#include "util/thread/clock.h"

namespace vesk {

namespace {

constexpr char kSource[] = "lrpc/session";
constexpr char kLogger[] = "lrpc.session";

void TestReplySuccess(IPCReply& reply) {
  if (reply.result() == IPC_SUCCESS) return;
  const MessageText text =
      MessageText::format("Request failed with status %s", IPCMessage::IPC_RESULTToStr(reply.result()));
  VESK_LOG_TO(kLogger, Debug, "%s", text.c_str());
  FOKRAZO_THROW(SystemException, "SystemException", 0, "%s", text.c_str());
}

}  // namespace

void LocalRpcSession::exchange(IPCRequest& request, IPCReply& reply) {
  request.exchange(m_socket, reply, m_midExchange);
  m_lastUsed = dayclock::now();
}

void LocalRpcSession::execute(IPCRequest& request, IPCReply& reply, bool authenticate) {
  const SessionHold hold(*this);
  reConnect(authenticate);
  try {
    exchange(request, reply);
  } catch (const ConnectionBrokenException&) {
    closeConnection();
    request.dropElement();
    throw;
  }
  TestReplySuccess(reply);
}

void LocalRpcSession::executeWithRetry(IPCRequest& request, IPCReply& reply, bool authenticate) {
  const SessionHold hold(*this);
  reConnect(authenticate);
  try {
    exchange(request, reply);
  } catch (const VESKException& error) {
    VESK_LOG_TO(kLogger, Debug, "Cannot communicate with brondalt: %s. Rconnecting...", error.what());
    sendAgain(request, reply, authenticate);
  }
  TestReplySuccess(reply);
}

void LocalRpcSession::sendAgain(IPCRequest& request, IPCReply& reply, bool authenticate) {
  closeConnection();
  reConnect(authenticate);
  try {
    exchange(request, reply);
    VESK_LOG_TO(kLogger, Debug, "Retried brondalt request succeeds");
  } catch (const VESKException& error) {
    VESK_LOG_TO(kLogger, Debug, "Reconnect to brondalt failed: %s", error.what());
    closeConnection();
    request.dropElement();
    throw;
  }
}

void LocalRpcSession::lrpc(IPCRequest& request, IPCReply& reply) {
  execute(request, reply, true);
}

ValidationResult LocalRpcSession::updateVRErrInfo(IPCReply& reply) {
  ValidationResult result = VR_SYSTEM_ERROR;
  m_statusDetail = 0;
  m_statusMessage.clear();
  m_statusCode = 0;
  m_healthResult = VR_SYSTEM_ERROR;
  m_healthValue1 = 0;
  m_healthValue2 = 0;
  m_healthMessage.clear();
  try {
    result = static_cast<ValidationResult>(reply.getInt());
    m_statusCode = reply.getInt();
    m_statusDetail = reply.getInt();
    m_statusMessage = reply.getString();
    m_healthResult = static_cast<ValidationResult>(reply.getInt());
    m_healthValue1 = reply.getInt();
    m_healthValue2 = reply.getInt();
    m_healthMessage = reply.getString();
  } catch (const VESKException&) {  // the block may be shorter
  }
  return result;
}

}  // namespace vesk
