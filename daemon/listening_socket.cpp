#include "daemon/listening_socket.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace brondalt {
namespace {

constexpr char kFreshSuffix[] = ".new";
constexpr mode_t kEverybody = 0666;

Descriptor makeSocket() {
  return Descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0), "socket");
}

void checkPath(const std::string& path) {
  if (path.empty() || path.size() > ListeningSocket::kLongestPath)
    throw Error("the path of the socket is empty or too long (" +
                std::to_string(ListeningSocket::kLongestPath) + " bytes at most): " + path);
}

sockaddr_un addressOf(const std::string& path) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  memcpy(address.sun_path, path.data(), path.size());
  return address;
}

/// Whether the file is a socket without a listener.
bool isStaleSocket(const std::string& path) {
  struct stat status = {};
  if (lstat(path.c_str(), &status) != 0 || !S_ISSOCK(status.st_mode)) return false;
  const sockaddr_un address = addressOf(path);
  const Descriptor fd = makeSocket();
  return connect(fd.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 &&
         errno == ECONNREFUSED;
}

/// Listens at `path`. Replaces a stale socket; any other file is an error.
Descriptor listenAt(const std::string& path) {
  if (isStaleSocket(path)) unlink(path.c_str());
  const sockaddr_un address = addressOf(path);
  Descriptor fd = makeSocket();
  if (bind(fd.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
    throwSystemError(path);
  if (chmod(path.c_str(), kEverybody) == 0 && listen(fd.get(), SOMAXCONN) == 0) return fd;
  const int error = errno;
  unlink(path.c_str());
  errno = error;
  throwSystemError(path);
}

}  // namespace

const size_t ListeningSocket::kLongestPath = sizeof(sockaddr_un::sun_path) - sizeof kFreshSuffix;

ListeningSocket::ListeningSocket(std::string path) : m_path(std::move(path)) {
  checkPath(m_path);
  struct stat status = {};
  if (lstat(m_path.c_str(), &status) == 0 && !isStaleSocket(m_path)) {
    errno = EADDRINUSE;
    throwSystemError(m_path);
  }
  replace();
}

ListeningSocket::~ListeningSocket() {
  close();
}

Descriptor ListeningSocket::replace() {
  const std::string fresh = m_path + kFreshSuffix;
  Descriptor fd = listenAt(fresh);
  struct stat file = {};
  if (lstat(fresh.c_str(), &file) != 0 || rename(fresh.c_str(), m_path.c_str()) != 0) {
    const int error = errno;
    unlink(fresh.c_str());
    errno = error;
    throwSystemError(m_path);
  }
  m_file = file;
  return std::exchange(m_fd, std::move(fd));
}

void ListeningSocket::close() {
  if (!m_fd) return;
  struct stat now = {};
  const bool isOurs =
      lstat(m_path.c_str(), &now) == 0 && now.st_ino == m_file.st_ino && now.st_dev == m_file.st_dev;
  // Removes the file first, so that disconnected clients do not try to reconnect.
  if (isOurs) unlink(m_path.c_str());
  m_fd = Descriptor();
}

}  // namespace brondalt
