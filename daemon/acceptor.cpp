#include "daemon/acceptor.h"

#include <sys/socket.h>

#include <cerrno>
#include <chrono>
#include <utility>

namespace brondalt {
namespace {

constexpr std::chrono::seconds kRetryAfter(1);

/// Whether the failure is that of one connection, and the next one may be accepted.
bool concernsOneConnection(int error) {
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
  m_loop.watch(m_socket.fd(), m_isPaused ? 0 : EventLoop::kReadable, [this](unsigned) { acceptAll(); });
}

void Acceptor::acceptAll() {
  while (!m_isPaused) {
    const int fd = accept4(m_socket.fd(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (fd >= 0) {
      m_take(Descriptor(fd));
    } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
      return;
    } else if (!concernsOneConnection(errno)) {
      waitForResources();
    }
  }
}

void Acceptor::waitForResources() {
  pause();
  m_loop.after(kRetryAfter, [self = std::weak_ptr<Acceptor*>(m_self)] {
    if (const auto acceptor = self.lock()) (*acceptor)->resume();
  });
}

void Acceptor::pause() {
  m_isPaused = true;
  m_loop.change(m_socket.fd(), 0);
}

void Acceptor::close() {
  m_loop.forget(m_socket.fd());
  m_socket.close();
}

void Acceptor::resume() {
  if (!m_isPaused) return;
  m_isPaused = false;
  m_loop.change(m_socket.fd(), EventLoop::kReadable);
}

void Acceptor::restart() {
  m_loop.forget(m_socket.fd());
  m_isPaused = false;
  try {
    m_socket.replace();
  } catch (const Error&) {
    watch();
    throw;
  }
  watch();
}

}  // namespace brondalt
