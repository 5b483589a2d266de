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
#include "lrpc/wire/call_io.h"
#include "lrpc/wire/call_progress.h"
#include "util/error/throw.h"
#include "util/thread/deadline.h"

namespace {

using vesk::Deadline;

int failWithoutError() {
  errno = 0;
  return -1;
}

// As IOWait.
int outcomeOf(int rc, int revents, int events) {
  if (rc <= 0) return rc;
  if (revents & (POLLERR | POLLHUP | POLLNVAL)) return failWithoutError();
  return (revents & events) == events ? 1 : failWithoutError();
}

int pollUntil(int fd, int events, Deadline end) {
  pollfd entry = {fd, static_cast<short>(events), 0};
  int rc;
  do {
    rc = poll(&entry, 1, end.pollTime());
  } while (rc < 0 && errno == EINTR);
  return outcomeOf(rc, entry.revents, events);
}

}  // namespace

int IOWait(int fd, int seconds, int events) {
  return pollUntil(fd, events, seconds < 0 ? Deadline::never() : Deadline::in(std::chrono::seconds(seconds)));
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
constexpr int kBusyPause = 5;  // milliseconds

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

[[noreturn]] void failCreate(CallProgress* call) {
  const int error = errno;
  if (call) call->error = error;
  FOKRAZO_THROW_ERRNO(IOException, "IOException", 1, error, "ipc socket create");
}

[[noreturn]] void failConnect(int error, CallProgress* call) {
  if (call) call->error = error;
  FOKRAZO_THROW_ERRNO(IOException, "IOException", 1, error, "ipc socket connect");
}

UniqueFd newSocket(int flags, CallProgress* call) {
  UniqueFd socket(::socket(AF_UNIX, SOCK_STREAM | flags, 0));
  if (!socket) failCreate(call);
  fcntl(socket.get(), F_SETFL, fcntl(socket.get(), F_GETFL) | O_NONBLOCK | O_WRONLY);
  return socket;
}

// Waits for at most one step's time-out, or within the limits of the call.
int waitFor(int fd, int events, CallProgress* call) {
  if (!call) return IOWait(fd, timeout(), events);
  while (!call->mustStop()) {
    const int rc = pollUntil(fd, events, call->nextLook());
    if (rc != 0) return rc;
  }
  return 0;
}

void waitForConnection(int fd, CallProgress* call) {
  const int rc = call ? waitFor(fd, POLLOUT, call) : SendWait(fd, connectTimeout());
  if (rc == 1) return;
  if (rc != 0) failConnect(errno, call);
  VESK_LOG_TO(kConnectLogger, Warn, "Timed out while waiting for socket connection");
  FOKRAZO_THROW(IOException, "IOException", 0, "ipc socket connect timed out");
}

// connect() reports a full backlog as EAGAIN, and no event announces room.
bool isWorthAnotherTry(int error, CallProgress* call) {
  if (error != EAGAIN || !call || call->mustStop()) return false;
  poll(nullptr, 0, kBusyPause);
  return true;
}

void connectTo(int fd, const std::string& path, CallProgress* call) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  SafeStrnCpy(address.sun_path, path.c_str(), sizeof address.sun_path);
  const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + strlen(address.sun_path));
  while (connect(fd, reinterpret_cast<sockaddr*>(&address), size) != 0) {
    if (errno == EINPROGRESS) return waitForConnection(fd, call);
    const int error = errno;
    if (!isWorthAnotherTry(error, call)) failConnect(error, call);
  }
}

// A message of only these bytes.
msghdr messageOf(iovec& bytes) {
  msghdr message = {};
  message.msg_iov = &bytes;
  message.msg_iovlen = 1;
  return message;
}

void waitForInput(int fd, CallProgress* call) {
  const int rc = waitFor(fd, POLLIN, call);
  const int error = errno;
  if (rc < 0)
    FOKRAZO_THROW_ERRNO(ConnectionBrokenException, "ConnectionBrokenException", error, error,
                        "read select error");
  if (rc == 0) FOKRAZO_THROW(TimeoutException, "TimeoutException", 0, "RecvWait out");
}

void waitForRoom(int fd, CallProgress* call) {
  const int rc = waitFor(fd, POLLOUT, call);
  const int error = errno;
  if (rc < 0)
    FOKRAZO_THROW_ERRNO(ConnectionBrokenException, "ConnectionBrokenException", rc, error,
                        "write select error");
  if (rc == 0) FOKRAZO_THROW(TimeoutException, "TimeoutException", 0, "write timed out");
}

unsigned int sendWithin(int fd, void* buffer, unsigned int size, CallProgress* call) {
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
    waitForRoom(fd, call);
  }
}

}  // namespace

int IPCconnect(std::string path) {
  UniqueFd socket = newSocket(0, nullptr);
  connectTo(socket.get(), path, nullptr);
  return socket.release();
}

// A low descriptor is replaced before connecting: until then nothing can be written to the socket.
UniqueFd connectPrivately(const std::string& path, CallProgress* call) {
  UniqueFd socket = aboveStandardStreams(newSocket(SOCK_CLOEXEC, call));
  if (!socket) failCreate(call);
  connectTo(socket.get(), path, call);
  return socket;
}

void IPCdisconnect(int fd) {
  UniqueFd(fd).close();
}

unsigned int receiveWithin(int fd, void* buffer, unsigned int size, CallProgress* call) {
  waitForInput(fd, call);
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

void readWithin(int fd, unsigned char* buffer, unsigned int count, CallProgress* call) {
  for (unsigned int done = 0; done < count;) done += receiveWithin(fd, buffer + done, count - done, call);
}

void writeWithin(int fd, unsigned char* buffer, unsigned int count, CallProgress* call) {
  for (unsigned int done = 0; done < count;) done += sendWithin(fd, buffer + done, count - done, call);
}

unsigned int readMsg(int fd, void* buffer, unsigned int size, int* /*reserved*/) {
  return receiveWithin(fd, buffer, size, nullptr);
}

unsigned int writeMsg(int fd, void* buffer, unsigned int size, bool /*reserved*/) {
  return sendWithin(fd, buffer, size, nullptr);
}

void readN(int fd, unsigned char* buffer, unsigned int count) {
  readWithin(fd, buffer, count, nullptr);
}

void writeN(int fd, unsigned char* buffer, unsigned int count) {
  writeWithin(fd, buffer, count, nullptr);
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
