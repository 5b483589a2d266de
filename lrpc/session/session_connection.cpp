// The connection of a session: whether it is usable, and opening a new one.

#include <poll.h>
#include <sys/socket.h>
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
#include "lrpc/session/own_sockets.h"
#include "lrpc/session/session_hold.h"
#include "lrpc/wire/call_io.h"
#include "lrpc/wire/call_progress.h"
#include "util/error/throw.h"
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

// Whether there is anything to read, including the end of the stream. Between two exchanges there should not
// be.
bool hasInput(int fd) {
  pollfd entry = {fd, POLLIN, 0};
  int rc;
  do {
    rc = poll(&entry, 1, 0);
  } while (rc < 0 && errno == EINTR);
  return rc != 0;
}

[[noreturn]] void failLost(CallProgress& call) {
  call.stop = CallProgress::Stop::ConnectionLost;
  FOKRAZO_THROW(ConnectionBrokenException, "ConnectionBrokenException", 0, "brondalt closed connection");
}

// Whether there are bytes to read. End of stream is harmless: the next request fails.
bool hasBytes(int fd) {
  char byte;
  return recv(fd, &byte, 1, MSG_PEEK | MSG_DONTWAIT) > 0;
}

}  // namespace

// --- One thread at a time ---

SessionHold::SessionHold(LocalRpcSession& session) : m_session(session) {
  const pthread_t self = pthread_self();
  pthread_t holder = pthread_t{};
  m_isOutermost = session.m_holder.compare_exchange_strong(holder, self, std::memory_order_acquire);
  if (!m_isOutermost && !pthread_equal(holder, self))
    FOKRAZO_THROW(SystemException, "SystemException", EBUSY, "session in use by another thread");
}

// --- The current connection ---

bool LocalRpcSession::isConnectionGood(time_t now, pid_t pid) {
  if (now - m_lastUsed > idleTimeout() && !(m_call && m_call->needsSameConnection)) {
    VESK_LOG_TO(kLogger, Debug, "dropping old lrpc connection");
    return false;
  }
  if (pid != m_pid || m_forkGeneration != ownsockets::forkGeneration()) {
    VESK_LOG_TO(kLogger, Debug, "process forked, closing parent's connection");
    return false;
  }
  ino_t inode;
  if (!ownsockets::isSameSocket(m_socket, m_socketInode, &inode)) {
    VESK_LOG_TO(kLogger, Debug, "lrpc connection reopened %d != %d\n", static_cast<int>(inode),
                static_cast<int>(m_socketInode));
    return false;
  }
  if (m_midExchange) {
    VESK_LOG_TO(kLogger, Debug, "dropping lrpc connection with an unfinished exchange");
    return false;
  }
  if (geteuid() != m_effectiveUid || getegid() != m_effectiveGid) {
    VESK_LOG_TO(kLogger, Debug, "dropping lrpc connection of another user or group");
    return false;
  }
  if (hasInput(m_socket)) {
    VESK_LOG_TO(kLogger, Debug, "dropping lrpc connection that brondalt has closed or written to unasked");
    return false;
  }
  return true;
}

void LocalRpcSession::closeConnection() {
  if (m_socket == -1) return;
  if (ownsockets::isSameSocket(m_socket, m_socketInode)) IPCdisconnect(m_socket);
  ownsockets::remove(m_socket, m_socketInode);
  m_socket = -1;
  m_processAuthenticated = false;
  m_midExchange = false;
}

void LocalRpcSession::lostConnection() {
  const SessionHold hold(*this);
  closeConnection();
}

void LocalRpcSession::dropConnection() {
  lostConnection();
}

// --- A new connection ---

void LocalRpcSession::connect(time_t now, pid_t pid) {
  m_effectiveUid = geteuid();
  m_effectiveGid = getegid();
  if (m_call) m_call->step = CallStep::Connecting;
  UniqueFd socket = connectPrivately(m_socketPath, m_call);
  struct stat status;
  const int rc = fstat(socket.get(), &status);
  if (rc != 0) FOKRAZO_THROW_CALL_FAILED(rc, errno);
  m_pid = pid;
  m_forkGeneration = ownsockets::forkGeneration();
  m_socketInode = status.st_ino;
  m_lastUsed = now;
  m_socket = socket.release();
  ownsockets::add(m_socket, m_socketInode);
  checkPeer();
  VESK_LOG_TO(kLogger, Debug, "New socket %ld (%ld)", static_cast<long>(m_socket),
              static_cast<long>(m_socketInode));
}

// A daemon whose own lookups came back to it through a module would wait for itself.
void LocalRpcSession::checkPeer() {
  const bool refusesOwnProcess = m_call && m_call->refusesOwnProcess;
  if (!m_trustedPeer && !refusesOwnProcess) return;
  ucred peer = {};
  socklen_t size = sizeof peer;
  const int rc = getsockopt(m_socket, SOL_SOCKET, SO_PEERCRED, &peer, &size);
  const int error = errno;
  if (rc != 0 || (m_trustedPeer && peer.uid != *m_trustedPeer)) {
    closeConnection();
    if (m_call) m_call->stop = CallProgress::Stop::UntrustedPeer;
    if (rc != 0) FOKRAZO_THROW_ERRNO(IOException, "IOException", EACCES, error, "ipc socket peer");
    FOKRAZO_THROW(IOException, "IOException", EACCES, "ipc socket peer has uid %u instead of %u", peer.uid,
                  *m_trustedPeer);
  }
  if (!refusesOwnProcess || peer.pid != getpid()) return;
  closeConnection();
  m_call->stop = CallProgress::Stop::OwnProcess;
  FOKRAZO_THROW(IOException, "IOException", EDEADLK, "ipc socket peer is this process");
}

// Whether the present connection serves the call.
bool LocalRpcSession::isConnectionGoodForCall(time_t now, pid_t pid) {
  if (m_socket == -1) return false;
  if (m_call && m_call->needsNewConnection) return false;
  return isConnectionGood(now, pid);
}

void LocalRpcSession::reConnect(bool authenticate) {
  const SessionHold hold(*this);
  if (m_call && authenticate) m_call->isAuthenticating = false;  // a task may go on after a failed attempt
  const time_t now = dayclock::now();
  const pid_t pid = getpid();
  if (isConnectionGoodForCall(now, pid)) {
    m_lastUsed = now;
    return;
  }
  closeConnection();
  if (m_call && m_call->needsSameConnection) failLost(*m_call);
  connect(now, pid);
  if (m_call) m_call->needsNewConnection = false;
  if (authenticate && m_authenticateProcess && !m_processAuthenticated) {
    if (m_call) m_call->isAuthenticating = true;
    authenticateProcess();
    if (m_call) m_call->isAuthenticating = false;
  }
  if (!hasBytes(m_socket)) return;
  closeConnection();
  FOKRAZO_THROW(ConnectionBrokenException, "ConnectionBrokenException", 0,
                "brondalt sent more than was asked for");
}

void LocalRpcSession::setTrustedPeer(uid_t uid) {
  const SessionHold hold(*this);
  closeConnection();
  m_trustedPeer = uid;
}

void LocalRpcSession::authenticateProcess() {
  const SessionHold hold(*this);
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
