// The session's care of its connection: when to make a new one, and what a failed exchange means for it.

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include <fokrazo/ipc_sockio.h>
#include <fokrazo/ipcmessage.h>
#include <fokrazo/log.h>
#include <fokrazo/properties.h>
#include <fokrazo/propnames.h>
#include <fokrazo/session.h>
#include "util/error/throw.h"
#include "util/file/unique_fd.h"
#include "util/thread/clock.h"

namespace vesk {

namespace {

constexpr char kSource[] = "lrpc/session";
constexpr char kLogger[] = "lrpc.session";
constexpr int kDefaultIdleTimeout = 30;

int idleTimeout() {
  const std::string text = Props(false, false)->getString(PN::LRPC_SESSION_TIMEOUT);
  return text.empty() ? kDefaultIdleTimeout : atoi(text.c_str());
}

void TestReplySuccess(IPCReply& reply) {
  if (reply.result() == IPC_SUCCESS) return;
  const MessageText text =
      MessageText::format("Request failed with status %s", IPCMessage::IPC_RESULTToStr(reply.result()));
  VESK_LOG_TO(kLogger, Debug, "%s", text.c_str());
  FOKRAZO_THROW(SystemException, "SystemException", 0, "%s", text.c_str());
}

}  // namespace

// Whether the descriptor is still the socket that was opened; `inode` is what it is now, 0 if it is nothing.
bool LocalRpcSession::ownsSocket(ino_t& inode) const {
  struct stat status;
  inode = fstat(m_socket, &status) == 0 ? status.st_ino : 0;
  return inode != 0 && inode == m_socketInode && S_ISSOCK(status.st_mode);
}

bool LocalRpcSession::isConnectionGood(time_t now, pid_t pid) {
  if (now - m_lastUsed > idleTimeout()) {
    VESK_LOG_TO(kLogger, Debug, "dropping old lrpc connection");
    return false;
  }
  if (pid != m_pid) {
    VESK_LOG_TO(kLogger, Debug, "process forked, closing parent's connection");
    return false;
  }
  ino_t inode;
  if (!ownsSocket(inode)) {
    VESK_LOG_TO(kLogger, Debug, "lrpc connection reopened %d != %d\n", static_cast<int>(inode),
                static_cast<int>(m_socketInode));
    return false;
  }
  if (m_midExchange) VESK_LOG_TO(kLogger, Debug, "dropping lrpc connection with an unfinished exchange");
  return !m_midExchange;
}

void LocalRpcSession::connect(time_t now, pid_t pid) {
  UniqueFd socket(IPCconnect(m_socketPath));
  struct stat status;
  const int rc = fstat(socket.get(), &status);
  if (rc != 0) FOKRAZO_THROW_ERRNO(SystemException, "vesk::SystemException", rc, errno, "OS call failed");
  m_pid = pid;
  m_socketInode = status.st_ino;
  m_lastUsed = now;
  m_socket = socket.release();
  VESK_LOG_TO(kLogger, Debug, "New socket %ld (%ld)", static_cast<long>(m_socket),
              static_cast<long>(m_socketInode));
}

void LocalRpcSession::reConnect(bool authenticate) {
  const time_t now = dayclock::now();
  const pid_t pid = getpid();
  if (m_socket != -1 && isConnectionGood(now, pid)) {
    m_lastUsed = now;
    return;
  }
  dropConnection();
  connect(now, pid);
  if (authenticate && m_authenticateProcess && !m_processAuthenticated) authenticateProcess();
}

void LocalRpcSession::lostConnection() {
  if (m_socket == -1) return;
  ino_t inode;
  if (ownsSocket(inode)) IPCdisconnect(m_socket);
  m_socket = -1;
  m_processAuthenticated = false;
  m_midExchange = false;
}

void LocalRpcSession::dropConnection() {
  lostConnection();
}

// What leaves this in the middle leaves the next request's place in the stream unknown.
void LocalRpcSession::exchange(IPCRequest& request, IPCReply& reply) {
  m_midExchange = true;
  try {
    request.execute(m_socket, &reply);
  } catch (const SystemException&) {
    m_midExchange = false;
    throw;
  } catch (const IOException& error) {
    m_midExchange = error.rc() == ENOMEM;
    throw;
  }
  m_midExchange = false;
  m_lastUsed = dayclock::now();
}

void LocalRpcSession::execute(IPCRequest& request, IPCReply& reply, bool authenticate) {
  reConnect(authenticate);
  try {
    exchange(request, reply);
  } catch (const ConnectionBrokenException&) {
    lostConnection();
    request.dropElement();
    throw;
  }
  TestReplySuccess(reply);
}

void LocalRpcSession::executeWithRetry(IPCRequest& request, IPCReply& reply, bool authenticate) {
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
  lostConnection();
  reConnect(authenticate);
  try {
    exchange(request, reply);
    VESK_LOG_TO(kLogger, Debug, "Retried brondalt request succeeds");
  } catch (const VESKException& error) {
    VESK_LOG_TO(kLogger, Debug, "Reconnect to brondalt failed: %s", error.what());
    lostConnection();
    request.dropElement();
    throw;
  }
}

void LocalRpcSession::lrpc(IPCRequest& request, IPCReply& reply) {
  execute(request, reply, true);
}

void LocalRpcSession::authenticateProcess() {
  if (m_processAuthenticated) return;
  m_authenticateProcess = true;
  try {
    IPCRequest request(IPC_OP_AUTH_REQUEST);
    IPCReply reply;
    executeWithRetry(request, reply, false);
    if (updateVRErrInfo(reply) != VR_SUCCESS)
      FOKRAZO_THROW(SystemException, "SystemException", 0, "client failed to provide correct credentials");
    m_processAuthenticated = true;
  } catch (const std::exception& error) {
    VESK_LOG_TO(kLogger, Info, "process authentication request failed: %s", error.what());
    throw;
  }
}

}  // namespace vesk
