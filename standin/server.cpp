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
#include <utility>

#include <fokrazo/error_util.h>
#include <fokrazo/strutil.h>
#include "standin/codec.h"
#include "standin/connection.h"
#include "standin/error.h"
#include "standin/operations.h"

namespace standin {
namespace {

constexpr uint32_t kHugeLength = UINT32_MAX;
/// How long the stand-in stays for a client to read the reply to its "stop".
constexpr int kDeliveryRounds = 100;
constexpr int kDeliveryRoundMs = 5;
/// The name of a new socket until it takes the old one's place.
constexpr char kFreshSuffix[] = ".new";
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

/// A path that leaves room for the name that a restart gives its socket first.
void checkPath(const std::string& path) {
  constexpr size_t kLongest = sizeof sockaddr_un::sun_path - sizeof kFreshSuffix;
  if (path.empty() || path.size() > kLongest)
    throw Error("the path of the socket is empty or too long (" + std::to_string(kLongest) +
                " bytes at most): " + path);
}

sockaddr_un addressOf(const std::string& path) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  memcpy(address.sun_path, path.data(), path.size());
  return address;
}

/// Makes the socket's file, for everybody to ask: its mode is 0666.
int bindForAll(int fd, const sockaddr_un& address) {
  mode_t before = umask(0111);
  int result = bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address);
  umask(before);
  return result;
}

/// A listening socket of that name.
int listenAt(const std::string& path) {
  int fd = makeSocket();
  if (bindForAll(fd, addressOf(path)) == 0 && listen(fd, SOMAXCONN) == 0) return fd;
  int error = errno;
  close(fd);
  errno = error;
  failWithSystemText(path);
}

/// Removes a socket at which nobody listens. Anything else that stands there stays, and makes bind fail.
void removeLeftover(const std::string& path) {
  sockaddr_un address = addressOf(path);
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
  checkPath(m_socketPath);
  removeLeftover(m_socketPath);
  m_listener = listenAt(m_socketPath);
}

void Server::run() {
  while (!endSignal && !m_service.stopIsWanted) {
    pollOnce();
    removeFinished();
    if (m_restartIsWanted || restartSignal) restart();
  }
  if (m_service.stopIsWanted) awaitDelivery();
}

void Server::awaitDelivery() {
  // A connection that ends before its last reply was read looks broken to the client.
  auto isDelivered = [](const auto& connection) { return connection->isDelivered(); };
  for (int i = 0; i < kDeliveryRounds; ++i) {
    for (const auto& connection : m_connections) connection->flush();
    if (std::all_of(m_connections.begin(), m_connections.end(), isDelivered)) return;
    poll(nullptr, 0, kDeliveryRoundMs);
  }
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

// What one connection wants too much memory for is the end of that connection.
void Server::serve(Connection& connection) {
  try {
    if (connection.wanted() == POLLOUT) {
      connection.flush();
    } else {
      connection.receive();
    }
    std::string_view message;
    while (!m_restartIsWanted && !m_service.stopIsWanted && connection.nextFrame(message))
      answer(connection, message);
  } catch (const std::bad_alloc&) {
    connection.end();
  }
}

void Server::answer(Connection& connection, std::string_view bytes) {
  Fault fault = m_faults.next();
  if (fault == Fault::Drop) return connection.end();
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
    if (m_isVerbose) report(connection, request.opcode());
    sendReply(connection, encode(*reply), fault);
  } catch (const VESKException& exception) {
    // No message: whoever sends this cannot be answered.
    if (m_isVerbose) fprintf(stderr, "connection %d: %s\n", connection.fd(), exception.what());
    connection.end();
  }
}

void Server::report(Connection& connection, vesk::IPC_OPCODE opcode) const {
  fprintf(stderr, "request %lu, connection %d %s: %s\n", m_service.requests, connection.fd(),
          ::printable(connection.client().sessionId).c_str(), vesk::IPCMessage::IPC_OPCODEToStr(opcode));
}

void Server::sendReply(Connection& connection, std::string_view message, Fault fault) {
  std::string bytes = frame(message);
  switch (fault) {
    case Fault::Lose:
      return connection.end();
    case Fault::Garbage:
      return connection.send(frame(kGarbage));
    case Fault::Empty:
      return connection.send(frame(""));
    case Fault::Huge:
      return connection.send(std::string(reinterpret_cast<const char*>(&kHugeLength), sizeof kHugeLength));
    case Fault::Short:
      return connection.sendLast(bytes.substr(0, sizeof(uint32_t) + message.size() / 2));
    case Fault::Cut:
      return connection.sendLast(bytes.substr(0, sizeof(uint32_t)));
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
  // The name goes first: whoever sees his connection end finds no socket that nobody serves.
  if (m_listener >= 0) {
    unlink(m_socketPath.c_str());
    close(m_listener);
    m_listener = -1;
  }
  m_connections.clear();
}

void Server::restart() {
  m_restartIsWanted = false;
  restartSignal = 0;
  m_acceptPauses = false;
  // The new socket takes the old one's name before any client notices, so that none finds nobody there.
  std::string fresh = m_socketPath + kFreshSuffix;
  removeLeftover(fresh);
  int listener = listenAt(fresh);
  if (rename(fresh.c_str(), m_socketPath.c_str()) != 0) failWithSystemText(m_socketPath);
  close(std::exchange(m_listener, listener));
  m_connections.clear();
}

}  // namespace standin
