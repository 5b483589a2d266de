#include "bench/support/canned_peer.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <fokrazo/adserializer.h>
#include <fokrazo/ipcmessage.h>
#include "bench/support/plain_socket.h"

namespace bench {
namespace {

constexpr int kHealthyResult = 0;
constexpr int kHealthValues[] = {12, 345678};

void addStatus(vesk::IPCReply& reply) {
  (((reply += 0) += 0) += 0) += std::string();
  ((reply += kHealthyResult) += kHealthValues[0]) += kHealthValues[1];
  reply += std::string("connected");
}

void addBlob(vesk::IPCReply& reply, const std::string& blob) {
  vesk::ADSerializer serializer(blob.size(), const_cast<char*>(blob.data()), false);
  reply += &serializer;
}

std::string newPath() {
  static int count = 0;
  const char* directory = getenv("TMPDIR");
  return std::string(directory ? directory : "/tmp") + "/bench." + std::to_string(getpid()) + "." +
         std::to_string(count++);
}

int listenAt(const std::string& path) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  snprintf(address.sun_path, sizeof address.sun_path, "%s", path.c_str());
  const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
  if (bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 || listen(fd, 64) != 0)
    die("listen");
  return fd;
}

[[noreturn]] void serve(int listener, const std::string& reply) {
  std::vector<char> request(1 << 16);
  size_t size;
  for (;;) {
    const int fd = accept(listener, nullptr, nullptr);
    if (fd < 0) _exit(0);
    fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_NONBLOCK);
    while (receiveFrame(fd, request, size)) sendFrame(fd, reply.data(), reply.size());
    close(fd);
  }
}

}  // namespace

std::string bytesOf(vesk::IPCMessage& message) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) die("socketpair");
  // In its own process, because it may not fit into the socket's buffer.
  const pid_t sender = fork();
  if (sender == 0) {
    message.send(ends[0]);
    _exit(0);
  }
  std::vector<char> bytes;
  size_t size = 0;
  if (!receiveFrame(ends[1], bytes, size)) die("bytesOf");
  waitpid(sender, nullptr, 0);
  for (int end : ends) close(end);
  return std::string(bytes.data(), size);
}

std::string emptyReply() {
  vesk::IPCReply reply(vesk::IPC_OP_PING);
  return bytesOf(reply);
}

std::string statusReply() {
  vesk::IPCReply reply(vesk::IPC_OP_GET_OBJECT);
  addStatus(reply);
  return bytesOf(reply);
}

std::string objectReply(const Entry& entry) {
  vesk::IPCReply reply(vesk::IPC_OP_GET_OBJECT);
  addStatus(reply);
  addBlob(reply, blobOf(entry));
  return bytesOf(reply);
}

std::string listReply(const std::vector<std::string>& blobs) {
  vesk::IPCReply reply(vesk::IPC_OP_LDAP_SEARCH);
  addStatus(reply);
  reply += static_cast<int>(blobs.size());
  for (const std::string& blob : blobs) addBlob(reply, blob);
  return bytesOf(reply);
}

CannedPeer::CannedPeer(const std::string& reply, int cpu) : m_path(newPath()) {
  const int listener = listenAt(m_path);
  m_pid = fork();
  if (m_pid == 0) {
    if (cpu >= 0) pinTo(cpu);
    serve(listener, reply);
  }
  close(listener);
}

CannedPeer::~CannedPeer() {
  kill(m_pid, SIGKILL);
  waitpid(m_pid, nullptr, 0);
  unlink(m_path.c_str());
}

}  // namespace bench
