#include "bench/support/plain_socket.h"

#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace bench {
namespace {

constexpr int kTimeoutMs = 300'000;

void sendAll(int fd, const char* bytes, size_t size) {
  while (size > 0) {
    iovec vector = {const_cast<char*>(bytes), size};
    msghdr header = {};
    header.msg_iov = &vector;
    header.msg_iovlen = 1;
    const ssize_t count = sendmsg(fd, &header, MSG_NOSIGNAL);
    if (count < 0 && errno == EAGAIN) {
      pollfd entry = {fd, POLLOUT, 0};
      poll(&entry, 1, kTimeoutMs);
      continue;
    }
    if (count <= 0) die("sendmsg");
    bytes += count;
    size -= count;
  }
}

bool receiveAll(int fd, void* bytes, size_t size) {
  for (size_t done = 0; done < size;) {
    pollfd entry = {fd, POLLIN, 0};
    if (poll(&entry, 1, kTimeoutMs) != 1 || (entry.revents & (POLLERR | POLLHUP | POLLNVAL))) return false;
    iovec vector = {static_cast<char*>(bytes) + done, size - done};
    msghdr header = {};
    header.msg_iov = &vector;
    header.msg_iovlen = 1;
    const ssize_t count = recvmsg(fd, &header, MSG_NOSIGNAL);
    if (count <= 0) return false;
    done += count;
  }
  return true;
}

}  // namespace

void die(const char* what) {
  perror(what);
  _exit(1);
}

void pinTo(int cpu) {
  cpu_set_t set;
  CPU_ZERO(&set);
  const long count = sysconf(_SC_NPROCESSORS_CONF);
  for (int i = 0; i < count; ++i)
    if (cpu == -1 || cpu == i) CPU_SET(i, &set);
  sched_setaffinity(0, sizeof set, &set);
}

int connectTo(const std::string& path) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  snprintf(address.sun_path, sizeof address.sun_path, "%s", path.c_str());
  const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
  fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_NONBLOCK);
  if (connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) die("connect");
  return fd;
}

void sendFrame(int fd, const char* message, size_t size) {
  const auto length = static_cast<uint32_t>(size);
  sendAll(fd, reinterpret_cast<const char*>(&length), sizeof length);
  sendAll(fd, message, size);
}

bool receiveFrame(int fd, std::vector<char>& bytes, size_t& size) {
  uint32_t length = 0;
  if (!receiveAll(fd, &length, sizeof length)) return false;
  if (bytes.size() < length) bytes.resize(length);
  size = length;
  return receiveAll(fd, bytes.data(), length);
}

size_t receiveLength(int fd) {
  uint32_t length = 0;
  if (!receiveAll(fd, &length, sizeof length)) die("receive");
  return length;
}

void receiveBytes(int fd, char* bytes, size_t size) {
  if (!receiveAll(fd, bytes, size)) die("receive");
}

void checkConnection(int fd) {
  static const pid_t self = getpid();
  struct stat status;
  pollfd input = {fd, POLLIN, 0};
  if (getpid() != self || fstat(fd, &status) != 0 || time(nullptr) == 0 || poll(&input, 1, 0) != 0)
    die("checkConnection");
}

}  // namespace bench
