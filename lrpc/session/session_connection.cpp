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
#include "lrpc/wire/private_connect.h"
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
  if (now - m_lastUsed > idleTimeout()) {
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
  UniqueFd socket = connectPrivately(m_socketPath);
  struct stat status;
  const int rc = fstat(socket.get(), &status);
  if (rc != 0) FOKRAZO_THROW_ERRNO(SystemException, "vesk::SystemException", rc, errno, "OS call failed");
  m_pid = pid;
  m_forkGeneration = ownsockets::forkGeneration();
  m_socketInode = status.st_ino;
  m_lastUsed = now;
  m_socket = socket.release();
  ownsockets::add(m_socket, m_socketInode);
  if (m_trustedPeer) checkTrustedPeer();
  VESK_LOG_TO(kLogger, Debug, "New socket %ld (%ld)", static_cast<long>(m_socket),
              static_cast<long>(m_socketInode));
}

void LocalRpcSession::checkTrustedPeer() {
  uid_t uid = 0;
  gid_t gid = 0;
  const int rc = get_peer_credential(m_socket, &uid, &gid);
  const int error = errno;
  if (rc == 0 && uid == *m_trustedPeer) return;
  closeConnection();
  if (rc != 0) FOKRAZO_THROW_ERRNO(IOException, "IOException", EACCES, error, "ipc socket peer");
  FOKRAZO_THROW(IOException, "IOException", EACCES, "ipc socket peer has uid %u instead of %u", uid,
                *m_trustedPeer);
}

void LocalRpcSession::reConnect(bool authenticate) {
  const SessionHold hold(*this);
  const time_t now = dayclock::now();
  const pid_t pid = getpid();
  if (m_socket != -1 && isConnectionGood(now, pid)) {
    m_lastUsed = now;
    return;
  }
  closeConnection();
  connect(now, pid);
  if (authenticate && m_authenticateProcess && !m_processAuthenticated) authenticateProcess();
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
