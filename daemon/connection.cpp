#include "daemon/connection.h"

#include <linux/sockios.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include <fokrazo/ipc_sockio.h>

namespace brondalt {
namespace {

constexpr size_t kReadSize = 64 << 10;

bool isTemporary(int error) {
  return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

}  // namespace

Connection::Connection(Descriptor fd, size_t maxFrameBytes) : m_fd(std::move(fd)), m_input(maxFrameBytes) {
  Caller& caller = m_client->caller;
  if (vesk::read_peer_cred(m_fd.get(), caller.uid, caller.gid))
    caller.mayAdminister = caller.uid == 0 || caller.uid == geteuid();
}

Connection::~Connection() {
  explicit_bzero(m_output.data(), m_output.size());
}

unsigned Connection::wanted() const {
  if (m_state == State::Idle) return EventLoop::kReadable;
  return m_state == State::Sending ? EventLoop::kWritable : 0;
}

bool Connection::isBusy() const {
  return m_state == State::Answering || m_state == State::Sending ||
         (m_state == State::Idle && m_input.hasPartOfFrame());
}

void Connection::handle(unsigned events) {
  if (m_state == State::Idle) {
    // Also when the peer has closed: what it sent before must still be carried out.
    receive();
  } else if (events & EventLoop::kClosed) {
    end();
  } else if (m_state == State::Sending) {
    flush();
  }
}

void Connection::receive() {
  char buffer[kReadSize];
  const ssize_t count = recv(m_fd.get(), buffer, sizeof buffer, 0);
  if (count > 0) {
    m_lastProgress = EventLoop::Clock::now();
    m_input.append({buffer, static_cast<size_t>(count)});
    explicit_bzero(buffer, static_cast<size_t>(count));
  } else if (count == 0 || !isTemporary(errno)) {
    end();
  }
}

bool Connection::nextRequest(std::string_view& message) {
  if (m_state != State::Idle) return false;
  const FrameReader::Result result = m_input.next(message);
  if (result == FrameReader::Result::BadLength) end();
  if (result != FrameReader::Result::Message) return false;
  m_state = State::Answering;
  m_lastProgress = EventLoop::Clock::now();
  return true;
}

void Connection::send(std::string bytes, size_t mostAtOnce) {
  m_output = std::move(bytes);
  m_mostAtOnce = mostAtOnce;
  m_sent = 0;
  m_state = State::Sending;
  flush();
}

void Connection::sendLast(std::string bytes) {
  m_isLast = true;
  send(std::move(bytes));
}

void Connection::flush() {
  const size_t stop = m_sent + std::min(m_output.size() - m_sent, m_mostAtOnce);
  while (m_sent < stop) {
    const ssize_t count = ::send(m_fd.get(), m_output.data() + m_sent, stop - m_sent, MSG_NOSIGNAL);
    if (count < 0) {
      if (!isTemporary(errno)) end();
      return;
    }
    m_lastProgress = EventLoop::Clock::now();
    m_sent += static_cast<size_t>(count);
  }
  if (m_sent == m_output.size()) finishReply();
}

void Connection::finishReply() {
  explicit_bzero(m_output.data(), m_output.size());
  // Frees the memory; most replies are small.
  std::string().swap(m_output);
  m_state = State::Idle;
  if (!m_isLast) return;
  // Closing immediately could destroy a reply that the client has not read yet.
  shutdown(m_fd.get(), SHUT_WR);
  stall();
}

bool Connection::isDelivered() const {
  int unread = 0;
  return m_output.empty() && (ioctl(m_fd.get(), SIOCOUTQ, &unread) != 0 || unread == 0);
}

}  // namespace brondalt
