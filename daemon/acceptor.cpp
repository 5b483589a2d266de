#include "daemon/acceptor.h"

#include <sys/socket.h>

#include <cerrno>
#include <chrono>
#include <utility>

namespace brondalt {
namespace {

constexpr std::chrono::seconds kRetryAfter(1);

/// Whether the error concerns only one connection, so that the next one can be accepted.
bool isConnectionError(int error) {
  return error == EINTR || error == ECONNABORTED;
}

}  // namespace

Acceptor::Acceptor(EventLoop& loop, ListeningSocket& socket, std::function<void(Descriptor)> take)
    : m_loop(loop), m_socket(socket), m_take(std::move(take)), m_self(std::make_shared<Acceptor*>(this)) {
  watch();
}

Acceptor::~Acceptor() {
  m_loop.forget(m_socket.fd());
}

void Acceptor::watch() {
  m_loop.watch(m_socket.fd(), EventLoop::kReadable, [this](unsigned) { acceptAll(); });
}

void Acceptor::acceptAll() {
  while (m_state == State::Accepting) {
    const int fd = accept4(m_socket.fd(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (fd >= 0) {
      m_take(Descriptor(fd));
    } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
      return;
    } else if (!isConnectionError(errno)) {
      pause();
    }
  }
}

void Acceptor::pause() {
  enter(State::Paused);
  if (!std::exchange(m_isRetrySet, true)) retryLater();
}

void Acceptor::retryLater() {
  m_loop.after(kRetryAfter, [held = std::weak_ptr<Acceptor*>(m_self)] {
    const auto self = held.lock();
    if (!self) return;
    (*self)->m_isRetrySet = false;
    (*self)->resume();
  });
}

void Acceptor::resume() {
  if (m_state == State::Paused) enter(State::Accepting);
}

void Acceptor::stop() {
  enter(State::Stopped);
}

void Acceptor::enter(State state) {
  m_state = state;
  m_loop.change(m_socket.fd(), state == State::Accepting ? EventLoop::kReadable : 0);
}

void Acceptor::close() {
  m_state = State::Stopped;
  m_loop.forget(m_socket.fd());
  m_socket.close();
}

bool Acceptor::restart() {
  if (m_state == State::Stopped) return false;
  const Descriptor old = m_socket.replace();
  m_loop.forget(old.get());
  m_state = State::Accepting;
  watch();
  return true;
}

}  // namespace brondalt
