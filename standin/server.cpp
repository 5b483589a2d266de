#include "standin/server.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <new>

#include "standin/codec.h"
#include "standin/connection.h"
#include "standin/error.h"
#include "standin/operations.h"
#include "util/include/error_util.h"

namespace standin {
namespace {

constexpr uint32_t kHugeLength = UINT32_MAX;
constexpr char kGarbage[] = "This is no message.";

volatile std::sig_atomic_t endSignal = 0;
volatile std::sig_atomic_t restartSignal = 0;

extern "C" void onSignal(int signal) {
  (signal == SIGHUP ? restartSignal : endSignal) = 1;
}

constexpr int kOwnSignals[] = {SIGTERM, SIGINT, SIGHUP};

/// Lets the signals come while polling alone, so that none is missed.
void takeSignals() {
  sigset_t own;
  sigemptyset(&own);
  struct sigaction action = {};
  action.sa_handler = onSignal;
  for (int signal : kOwnSignals) {
    sigaddset(&own, signal);
    sigaction(signal, &action, nullptr);
  }
  sigprocmask(SIG_BLOCK, &own, nullptr);
}

sigset_t maskWhilePolling() {
  sigset_t mask;
  sigprocmask(SIG_BLOCK, nullptr, &mask);
  for (int signal : kOwnSignals) sigdelset(&mask, signal);
  return mask;
}

[[noreturn]] void failWithSystemText(const std::string& what) {
  throw Error(what + ": " + strerror(errno));
}

std::string frame(std::string_view message) {
  uint32_t length = static_cast<uint32_t>(message.size());
  std::string bytes(reinterpret_cast<const char*>(&length), sizeof length);
  return bytes.append(message);
}

int makeSocket() {
  int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  if (fd < 0) failWithSystemText("socket");
  return fd;
}

sockaddr_un addressOf(const std::string& path) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  if (path.empty() || path.size() >= sizeof address.sun_path)
    throw Error("the path of the socket is empty or too long: " + path);
  memcpy(address.sun_path, path.data(), path.size());
  return address;
}

/// Removes a socket at which nobody listens. Anything else that stands there stays, and makes bind fail.
void removeLeftover(const std::string& path, const sockaddr_un& address) {
  struct stat status = {};
  if (lstat(path.c_str(), &status) != 0 || !S_ISSOCK(status.st_mode)) return;
  int fd = makeSocket();
  int result = connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address);
  bool isLeftover = result != 0 && errno == ECONNREFUSED;
  close(fd);
  if (isLeftover) unlink(path.c_str());
}

}  // namespace

Server::Server(std::string socketPath, Service& service, Faults& faults, bool isVerbose)
    : m_socketPath(std::move(socketPath)), m_service(service), m_faults(faults), m_isVerbose(isVerbose) {
  takeSignals();
}

Server::~Server() {
  closeAll();
}

void Server::open() {
  sockaddr_un address = addressOf(m_socketPath);
  removeLeftover(m_socketPath, address);
  int fd = makeSocket();
  if (bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      listen(fd, SOMAXCONN) != 0) {
    int error = errno;
    close(fd);
    errno = error;
    failWithSystemText(m_socketPath);
  }
  m_listener = fd;
}

void Server::run() {
  while (!endSignal && !m_service.stopIsWanted) {
    pollOnce();
    removeFinished();
    if (m_restartIsWanted || restartSignal) restart();
  }
  // The reply to "stop" may still be on its way; a client that does not take it at once does without.
  for (const auto& connection : m_connections) connection->flush();
}

void Server::pollOnce() {
  std::vector<pollfd> polled;
  polled.push_back({m_acceptPauses ? -1 : m_listener, POLLIN, 0});
  for (const auto& connection : m_connections) polled.push_back({connection->fd(), connection->wanted(), 0});
  sigset_t mask = maskWhilePolling();
  if (ppoll(polled.data(), polled.size(), nullptr, &mask) < 0) {
    if (errno != EINTR) failWithSystemText("poll");
    return;
  }
  for (size_t i = 1; i < polled.size() && !m_restartIsWanted; ++i)
    if (polled[i].revents) serve(*m_connections[i - 1]);
  if (polled[0].revents) accept();
}

void Server::accept() {
  for (;;) {
    int fd = accept4(m_listener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (fd >= 0) {
      m_connections.push_back(std::make_unique<Connection>(fd));
    } else if (errno != EINTR && errno != ECONNABORTED) {
      m_acceptPauses = errno != EAGAIN && errno != EWOULDBLOCK && !m_connections.empty();
      return;
    }
  }
}

void Server::serve(Connection& connection) {
  if (connection.wanted() == POLLOUT) {
    connection.flush();
  } else {
    connection.receive();
  }
  std::string_view message;
  while (!m_restartIsWanted && !m_service.stopIsWanted && connection.nextFrame(message))
    answer(connection, message);
}

void Server::answer(Connection& connection, std::string_view bytes) {
  Fault fault = m_faults.next();
  if (fault == Fault::Drop) return connection.closeWhenSent();
  if (fault == Fault::Stall) return connection.fallSilent();
  if (fault == Fault::Restart) {
    m_restartIsWanted = true;
    return;
  }
  try {
    vesk::IPCMessage request;
    decode(bytes, request);
    std::unique_ptr<vesk::IPCReply> reply = fault == Fault::Refuse
                                                ? bareReply(request.opcode(), vesk::IPC_NOT_AUTHORIZED)
                                                : carryOut(m_service, connection.client(), request);
    if (m_isVerbose)
      fprintf(stderr, "request %lu, connection %d: %s\n", m_service.requests, connection.fd(),
              vesk::IPCMessage::IPC_OPCODEToStr(request.opcode()));
    this->reply(connection, encode(*reply), fault);
  } catch (const VESKException& exception) {
    // No message: whoever sends this cannot be answered.
    if (m_isVerbose) fprintf(stderr, "connection %d: %s\n", connection.fd(), exception.what());
    connection.closeWhenSent();
  } catch (const std::bad_alloc&) {
    connection.closeWhenSent();
  }
}

void Server::reply(Connection& connection, std::string_view message, Fault fault) {
  std::string bytes = frame(message);
  switch (fault) {
    case Fault::Lose:
      return connection.closeWhenSent();
    case Fault::Garbage:
      return connection.send(frame(kGarbage));
    case Fault::Empty:
      return connection.send(frame(""));
    case Fault::Huge:
      return connection.send(std::string(reinterpret_cast<const char*>(&kHugeLength), sizeof kHugeLength));
    case Fault::Short:
      connection.send(bytes.substr(0, sizeof(uint32_t) + message.size() / 2));
      return connection.closeWhenSent();
    case Fault::Cut:
      connection.send(bytes.substr(0, sizeof(uint32_t)));
      return connection.closeWhenSent();
    case Fault::Trickle:
      return connection.trickle(std::move(bytes));
    default:
      return connection.send(std::move(bytes));
  }
}

void Server::removeFinished() {
  auto behind = std::remove_if(m_connections.begin(), m_connections.end(),
                               [](const auto& connection) { return connection->isFinished(); });
  if (behind != m_connections.end()) m_acceptPauses = false;
  m_connections.erase(behind, m_connections.end());
}

void Server::closeAll() {
  m_connections.clear();
  if (m_listener < 0) return;
  close(m_listener);
  m_listener = -1;
  unlink(m_socketPath.c_str());
}

void Server::restart() {
  m_restartIsWanted = false;
  restartSignal = 0;
  m_acceptPauses = false;
  closeAll();
  open();
}

}  // namespace standin
