#include <fokrazo/ipc_sockio.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstddef>
#include <cstring>

#include <fokrazo/log.h>
#include <fokrazo/properties.h>
#include <fokrazo/propnames.h>
#include <fokrazo/strutil.h>
#include "lrpc/wire/private_connect.h"
#include "util/error/throw.h"

namespace {

using Clock = std::chrono::steady_clock;

// Milliseconds until then, for poll; at least 0.
int millisecondsUntil(Clock::time_point end) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
  return static_cast<int>(std::clamp<decltype(left)>(left, 0, INT_MAX));
}

int failWithoutError() {
  errno = 0;
  return -1;
}

}  // namespace

int IOWait(int fd, int seconds, int events) {
  pollfd entry = {fd, static_cast<short>(events), 0};
  const Clock::time_point end = Clock::now() + std::chrono::seconds(seconds);
  int rc;
  do {
    rc = poll(&entry, 1, seconds < 0 ? -1 : millisecondsUntil(end));
  } while (rc < 0 && errno == EINTR);
  if (rc <= 0) return rc;
  if (entry.revents & (POLLERR | POLLHUP | POLLNVAL)) return failWithoutError();
  return (entry.revents & events) == events ? 1 : failWithoutError();
}

int RecvWait(int fd, int seconds) {
  return IOWait(fd, seconds, POLLIN);
}

int SendWait(int fd, int seconds) {
  return IOWait(fd, seconds, POLLOUT);
}

int get_peer_credential(int fd, uid_t* uid, gid_t* gid) {
  ucred peer = {};
  socklen_t size = sizeof peer;
  if (getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) return -1;
  *uid = peer.uid;
  *gid = peer.gid;
  return 0;
}

int zantrel_pselect(int nfds, fd_set* read, fd_set* write, fd_set* except, const timespec* timeout,
                    const sigset_t* mask, int* error) {
  *error = 0;
  const int rc = pselect(nfds, read, write, except, timeout, mask);
  if (rc < 0) *error = errno;
  return rc;
}

namespace vesk {

namespace {

constexpr char kSource[] = "lrpc/ipc_sockio";
constexpr char kLogger[] = "lrpc.sockio";
constexpr char kConnectLogger[] = "lrpc.ipcmessage";
constexpr int kDefaultConnectTimeout = 5;
constexpr int kDefaultTimeout = 300;

// A configured number of seconds, limited to the range of int.
int seconds(long configured) {
  return static_cast<int>(std::clamp<long>(configured, INT_MIN, INT_MAX));
}

int timeout() {
  return seconds(Props(false, false)->getTime(PN::LRPC_TIMEOUT, 's', kDefaultTimeout));
}

int connectTimeout() {
  const long configured = Props(false, false)->getTime(PN::LRPC_CONNECT_TIMEOUT, 's', kDefaultConnectTimeout);
  if (configured > 0) return seconds(configured);
  VESK_LOG_TO(kConnectLogger, Warn, "Illegal value for %s: %ld. Using %d", PN::LRPC_CONNECT_TIMEOUT.c_str(),
              configured, kDefaultConnectTimeout);
  return kDefaultConnectTimeout;
}

[[noreturn]] void failCreate() {
  FOKRAZO_THROW_ERRNO(IOException, "IOException", 1, errno, "ipc socket create");
}

[[noreturn]] void failConnect(int error) {
  FOKRAZO_THROW_ERRNO(IOException, "IOException", 1, error, "ipc socket connect");
}

void waitForConnection(int fd) {
  const int rc = SendWait(fd, connectTimeout());
  if (rc == 1) return;
  if (rc != 0) failConnect(errno);
  VESK_LOG_TO(kConnectLogger, Warn, "Timed out while waiting for socket connection");
  FOKRAZO_THROW(IOException, "IOException", 0, "ipc socket connect timed out");
}

UniqueFd newSocket(int flags) {
  UniqueFd socket(::socket(AF_UNIX, SOCK_STREAM | flags, 0));
  if (!socket) failCreate();
  fcntl(socket.get(), F_SETFL, fcntl(socket.get(), F_GETFL) | O_NONBLOCK | O_WRONLY);
  return socket;
}

void connectTo(int fd, const std::string& path) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  SafeStrnCpy(address.sun_path, path.c_str(), sizeof address.sun_path);
  const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + strlen(address.sun_path));
  if (connect(fd, reinterpret_cast<sockaddr*>(&address), size) == 0) return;
  if (errno != EINPROGRESS) failConnect(errno);
  waitForConnection(fd);
}

// A message of only these bytes.
msghdr messageOf(iovec& bytes) {
  msghdr message = {};
  message.msg_iov = &bytes;
  message.msg_iovlen = 1;
  return message;
}

void waitForInput(int fd) {
  const int rc = RecvWait(fd, timeout());
  const int error = errno;
  if (rc < 0)
    FOKRAZO_THROW_ERRNO(ConnectionBrokenException, "ConnectionBrokenException", error, error,
                        "read select error");
  if (rc == 0) FOKRAZO_THROW(TimeoutException, "TimeoutException", 0, "RecvWait out");
}

void waitForRoom(int fd) {
  const int rc = SendWait(fd, timeout());
  const int error = errno;
  if (rc < 0)
    FOKRAZO_THROW_ERRNO(ConnectionBrokenException, "ConnectionBrokenException", rc, error,
                        "write select error");
  if (rc == 0) FOKRAZO_THROW(TimeoutException, "TimeoutException", 0, "write timed out");
}

}  // namespace

int IPCconnect(std::string path) {
  UniqueFd socket = newSocket(0);
  connectTo(socket.get(), path);
  return socket.release();
}

// A low descriptor is replaced before connecting: until then nothing can be written to the socket.
UniqueFd connectPrivately(const std::string& path) {
  UniqueFd socket = newSocket(SOCK_CLOEXEC);
  if (socket.get() <= STDERR_FILENO) {
    socket = UniqueFd(fcntl(socket.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    if (!socket) failCreate();
  }
  connectTo(socket.get(), path);
  return socket;
}

void IPCdisconnect(int fd) {
  UniqueFd(fd).close();
}

unsigned int readMsg(int fd, void* buffer, unsigned int size, int* /*reserved*/) {
  waitForInput(fd);
  VESK_LOG_TO(kLogger, Trace, "recv message: flag %x", static_cast<unsigned int>(MSG_NOSIGNAL));
  iovec bytes = {buffer, size};
  msghdr message = messageOf(bytes);
  const ssize_t count = recvmsg(fd, &message, MSG_NOSIGNAL);
  if (count < 0)
    FOKRAZO_THROW_ERRNO(ConnectionBrokenException, "ConnectionBrokenException", -1, errno, "readMsg error");
  if (count == 0)
    FOKRAZO_THROW(ConnectionBrokenException, "ConnectionBrokenException", 0,
                  "readMsg: brondalt closed connection");
  return static_cast<unsigned int>(count);
}

unsigned int writeMsg(int fd, void* buffer, unsigned int size, bool /*reserved*/) {
  iovec bytes = {buffer, size};
  const msghdr message = messageOf(bytes);
  for (;;) {
    VESK_LOG_TO(kLogger, Trace, "sending message. Flag %x", static_cast<unsigned int>(MSG_NOSIGNAL));
    errno = 0;  // a result of 0 sets no errno
    const ssize_t count = sendmsg(fd, &message, MSG_NOSIGNAL);
    const int error = errno;
    if (count > 0) return static_cast<unsigned int>(count);
    if (error == EINTR) continue;
    if (error != EAGAIN)
      FOKRAZO_THROW_ERRNO(ConnectionBrokenException, "ConnectionBrokenException", static_cast<int>(count),
                          error, "writeMsg failed");
    waitForRoom(fd);
  }
}

void readN(int fd, unsigned char* buffer, unsigned int count) {
  for (unsigned int done = 0; done < count;) done += readMsg(fd, buffer + done, count - done, nullptr);
}

void writeN(int fd, unsigned char* buffer, unsigned int count) {
  for (unsigned int done = 0; done < count;) done += writeMsg(fd, buffer + done, count - done, false);
}

bool read_peer_cred(int fd, unsigned int& uid, unsigned int& gid) {
  uid_t peerUid;
  gid_t peerGid;
  if (get_peer_credential(fd, &peerUid, &peerGid) != 0) return false;
  uid = peerUid;
  gid = peerGid;
  return true;
}

}  // namespace vesk
