#include <fokrazo/session.h>

#include <unistd.h>

#include <fokrazo/error_util.h>
#include <fokrazo/ipcmessage.h>
#include <fokrazo/log.h>
#include "lrpc/wire/ipc_tables.h"

namespace vesk {

namespace {

constexpr char kLogger[] = "lrpc.session";

}  // namespace

LocalRpcSession::LocalRpcSession(const std::string& socketPath, bool connectNow, bool authenticateProcess)
    : m_pid(getpid()), m_socketPath(socketPath), m_authenticateProcess(authenticateProcess) {
  if (!connectNow) return;
  try {
    reConnect(true);
  } catch (const VESKException& error) {
    VESK_LOG_TO(kLogger, Warn, "LRPC connection failed: (%s) %s", error.className(), error.what());
  } catch (...) {
    closeConnection();  // the destructor will not run
    throw;
  }
}

LocalRpcSession::~LocalRpcSession() {
  closeConnection();
}

std::string LocalRpcSession::errorString(ValidationResult value) {
  return textOf(VALIDATION_RESULT_STRS, value, "unexpected error");
}

void LocalRpcSession::ping() {
  IPCRequest request(IPC_OP_PING);
  IPCReply reply;
  executeWithRetry(request, reply, true);
}

void LocalRpcSession::stop() {
  IPCRequest request(IPC_OP_STOP);
  IPCReply reply;
  execute(request, reply, true);
}

}  // namespace vesk
