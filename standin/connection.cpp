#include "standin/connection.h"

#include <linux/sockios.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <utility>

#include <fokrazo/ipc_sockio.h>

namespace standin {
namespace {

constexpr size_t kReadSize = 64 << 10;
/// A larger buffer is given back once its frame has been served.
constexpr size_t kKeptInputBytes = 256 << 10;

bool isTemporary(int error) {
  return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

}  // namespace

Connection::Connection(int fd) : m_fd(fd) {
  unsigned int uid = 0, gid = 0;
  if (vesk::read_peer_cred(fd, uid, gid)) m_client.mayAdminister = uid == 0 || uid == geteuid();
}

Connection::~Connection() {
  close(m_fd);
}

short Connection::wanted() const {
  if (m_isSilent) return 0;
  return m_output.empty() ? POLLIN : POLLOUT;
}

void Connection::receive() {
  char buffer[kReadSize];
  ssize_t count = recv(m_fd, buffer, sizeof buffer, 0);
  if (count > 0) {
    dropServed();
    m_input.append(buffer, static_cast<size_t>(count));
  } else if (count == 0 || !isTemporary(errno)) {
    m_isFinished = true;
  }
}

void Connection::dropServed() {
  m_input.erase(0, m_served);
  m_served = 0;
  if (m_input.empty() && m_input.capacity() > kKeptInputBytes) m_input.shrink_to_fit();
}

bool Connection::nextFrame(std::string_view& message) {
  if (m_isFinished || m_isSilent || !m_output.empty()) return false;
  uint32_t length = 0;
  std::string_view rest = std::string_view(m_input).substr(m_served);
  if (rest.size() < sizeof length) return false;
  memcpy(&length, rest.data(), sizeof length);
  if (length == 0 || length > kMostFrameBytes) {
    m_isFinished = true;
    return false;
  }
  if (rest.size() - sizeof length < length) return false;
  message = rest.substr(sizeof length, length);
  m_served += sizeof length + length;
  return true;
}

void Connection::send(std::string bytes) {
  m_output = std::move(bytes);
  m_sent = 0;
  flush();
}

void Connection::trickle(std::string bytes) {
  m_trickles = true;
  send(std::move(bytes));
}

void Connection::sendLast(std::string bytes) {
  m_isLast = true;
  send(std::move(bytes));
}

void Connection::flush() {
  while (m_sent < m_output.size()) {
    size_t left = m_output.size() - m_sent;
    ssize_t count = ::send(m_fd, m_output.data() + m_sent, m_trickles ? 1 : left, MSG_NOSIGNAL);
    if (count < 0) {
      m_isFinished = !isTemporary(errno);
      return;
    }
    m_sent += static_cast<size_t>(count);
    if (m_trickles) break;
  }
  if (m_sent < m_output.size()) return;
  // The buffer of a large reply goes back; replies are mostly small.
  std::string().swap(m_output);
  m_trickles = false;
  if (!m_isLast) return;
  // To close at once could take the reply from a client that has not read it yet.
  shutdown(m_fd, SHUT_WR);
  fallSilent();
}

bool Connection::isDelivered() const {
  int unread = 0;
  return m_output.empty() && (ioctl(m_fd, SIOCOUTQ, &unread) != 0 || unread == 0);
}

void Connection::fallSilent() {
  m_isSilent = true;
}

}  // namespace standin
