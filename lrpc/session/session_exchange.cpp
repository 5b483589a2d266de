// Exchanging a request and its reply: execute, the second attempt, and the status block.

#include <fokrazo/ipcmessage.h>
#include <fokrazo/log.h>
#include <fokrazo/session.h>
#include "lrpc/session/session_hold.h"
#include "lrpc/wire/call_progress.h"
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

// Nobody waits for the answer to a request of a call that is over; a change would be made all the same.
void startSending(CallProgress& call) {
  call.reach(CallStep::Sending);
  if (call.mustStop()) FOKRAZO_THROW(TimeoutException, "TimeoutException", 0, "write timed out");
}

}  // namespace

void LocalRpcSession::sendRequest(IPCRequest& request) {
  m_lastResult = VR_NO_REPLY_YET;
  m_isStatusReadable = false;
  if (m_call) startSending(*m_call);
  request.transmit(m_socket, m_midExchange, m_call);
  if (m_call) m_call->reach(CallStep::Receiving);
}

void LocalRpcSession::receiveReply(IPCReply& reply) {
  reply.receive(m_socket, m_midExchange, m_call);
  if (m_call) m_call->reach(CallStep::Reading);
  reply.requireSuccess();
  m_lastUsed = dayclock::now();
}

void LocalRpcSession::exchange(IPCRequest& request, IPCReply& reply) {
  sendRequest(request);
  receiveReply(reply);
}

void LocalRpcSession::execute(IPCRequest& request, IPCReply& reply, bool authenticate) {
  const SessionHold hold(*this);
  m_lastResult = VR_NO_REPLY_YET;
  reConnect(authenticate);
  try {
    exchange(request, reply);
  } catch (const VESKException& error) {
    if (hasDaemonMissedRequest()) return sendAgain(request, reply, authenticate);
    if (!dynamic_cast<const ConnectionBrokenException*>(&error)) throw;
    closeConnection();
    request.dropElement();
    throw;
  }
  TestReplySuccess(reply);
}

void LocalRpcSession::executeWithRetry(IPCRequest& request, IPCReply& reply, bool authenticate) {
  const SessionHold hold(*this);
  m_lastResult = VR_NO_REPLY_YET;
  reConnect(authenticate);
  try {
    exchange(request, reply);
  } catch (const VESKException& error) {
    if (!maySendAgain()) {
      closeConnection();
      throw;
    }
    VESK_LOG_TO(kLogger, Debug, "Cannot communicate with brondalt: %s. Rconnecting...", error.what());
    sendAgain(request, reply, authenticate);
  }
  TestReplySuccess(reply);
}

// Whether the call may try again: a daemon that has not had the whole request cannot have carried it out.
bool LocalRpcSession::hasDaemonMissedRequest() const {
  return m_call && m_call->stop == CallProgress::Stop::None && !m_call->needsSameConnection &&
         m_call->step <= CallStep::Sending;
}

bool LocalRpcSession::maySendAgain() const {
  if (!m_call) return true;
  if (m_call->stop != CallProgress::Stop::None || m_call->needsSameConnection) return false;
  return m_call->isRepeatable || hasDaemonMissedRequest();
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
    m_isStatusReadable = true;
    m_statusCode = reply.getInt();
    m_statusDetail = reply.getInt();
    m_statusMessage = reply.getString();
    m_healthResult = static_cast<ValidationResult>(reply.getInt());
    m_healthValue1 = reply.getInt();
    m_healthValue2 = reply.getInt();
    m_healthMessage = reply.getString();
  } catch (const VESKException&) {  // the block may be shorter
  }
  m_lastResult = result == VR_NO_REPLY_YET ? VR_UNSPECIFIED_ERROR : result;  // a daemon must not send it
  return result;
}

}  // namespace vesk
