#include "daemon/server.h"

#include <algorithm>
#include <new>
#include <utility>
#include <vector>

#include <fokrazo/error_util.h>
#include <fokrazo/strutil.h>
#include "daemon/codec.h"

namespace brondalt {
namespace {

using std::chrono::milliseconds;

/// Bounds the wait for clients to read their last replies before the daemon ends.
constexpr int kDeliveryRounds = 100;
constexpr milliseconds kDeliveryRound(5);
/// Checks of connections for progress per Limits::step.
constexpr int kSweepsPerStep = 10;

/// Requests of one connection per turn; more wait for the other connections.
constexpr int kRequestsPerTurn = 8;

}  // namespace

Server::Server(EventLoop& loop, ListeningSocket& socket, Service& service, Traffic& traffic,
               const Limits& limits, Log log)
    : m_loop(loop),
      m_service(service),
      m_traffic(traffic),
      m_limits(limits),
      m_log(std::move(log)),
      m_dispatcher(service, [this] { stop(); }),
      m_acceptor(loop, socket, [this](Descriptor fd) { add(std::move(fd)); }),
      m_self(std::make_shared<Server*>(this)) {
  sweepLater();
}

Server::~Server() {
  m_self.reset();
  // Removes the file first, so that disconnected clients do not try to reconnect.
  m_acceptor.close();
  for (const auto& entry : m_connections) m_loop.forget(entry.first);
}

bool Server::restart() {
  // The new socket exists before any client loses its connection.
  if (!listenAgain()) return false;
  ++m_service.statistics.restarts;
  for (const auto& entry : m_connections) {
    m_loop.forget(entry.first);
    entry.second.connection->end();
  }
  m_connections.clear();
  m_connectionsOfUser.clear();
  return true;
}

bool Server::listenAgain() {
  try {
    return m_acceptor.restart();
  } catch (const Error& error) {
    if (m_log) m_log(std::string("cannot restart: ") + error.what());
    return false;
  }
}

// Closes the connection if its user has too many, or if the system cannot serve it.
void Server::add(Descriptor descriptor) {
  const int fd = descriptor.get();
  ConnectionPtr connection;
  try {
    connection = std::make_shared<Connection>(std::move(descriptor), m_limits.frameBytes);
    const unsigned uid = connection->client()->caller.uid;
    if (!mayConnect(uid)) {
      if (m_log) m_log("user " + std::to_string(uid) + " has too many connections");
      return;
    }
    size_t& ofUser = m_connectionsOfUser[uid];
    m_connections[fd] = {connection, {}};
    ++ofUser;
    m_loop.watch(fd, connection->wanted(),
                 [this, connection](unsigned events) { handle(connection, events); });
  } catch (const std::exception&) {
    if (connection) forget(*connection);
  }
}

bool Server::mayConnect(unsigned uid) const {
  const auto ofUser = m_connectionsOfUser.find(uid);
  return m_limits.connectionsOfUser == 0 || ofUser == m_connectionsOfUser.end() ||
         ofUser->second < m_limits.connectionsOfUser;
}

// Unless it was not counted yet.
void Server::forget(const Connection& connection) {
  if (m_connections.erase(connection.fd()) == 0) return;
  const auto ofUser = m_connectionsOfUser.find(connection.client()->caller.uid);
  if (--ofUser->second == 0) m_connectionsOfUser.erase(ofUser);
}

// Running out of memory ends only the connection that needed it.
void Server::handle(const ConnectionPtr& connection, unsigned events) {
  try {
    if (events != 0) connection->handle(events);
    serve(connection);
  } catch (const std::bad_alloc&) {
    connection->end();
    settle(connection);
  }
}

void Server::serve(const ConnectionPtr& connection) {
  const Connection* const outer = std::exchange(m_served, connection.get());
  std::string_view message;
  int left = kRequestsPerTurn;
  while (!m_isStopping && left > 0 && connection->nextRequest(message)) {
    --left;
    answer(connection, message);
  }
  m_served = outer;
  settle(connection);
  if (left > 0 || connection->isFinished()) return;
  m_loop.post([self = std::weak_ptr<Server*>(m_self), connection] {
    const auto server = self.lock();
    if (server && (*server)->isServed(connection)) (*server)->serve(connection);
  });
}

void Server::answer(const ConnectionPtr& connection, std::string_view bytes) {
  const Traffic::Admission admission = m_traffic.admit();
  switch (admission.verdict) {
    case Traffic::Verdict::Close:
      return connection->end();
    case Traffic::Verdict::Ignore:
      return connection->stall();
    case Traffic::Verdict::Restart:
      if (!restart()) connection->end();
      return;
    case Traffic::Verdict::Refuse:
    case Traffic::Verdict::CarryOut:
      break;
  }
  try {
    vesk::IPCMessage request;
    decode(bytes, request);
    if (m_log) logRequest(*connection, request.opcode());
    if (admission.verdict == Traffic::Verdict::Refuse) {
      refuse(connection, request.opcode(), admission);
    } else {
      carryOut(connection, request, admission);
    }
  } catch (const VESKException& exception) {
    // There is no reply to bytes that are not a message.
    if (m_log) m_log("connection " + std::to_string(connection->fd()) + ": " + exception.what());
    connection->end();
  }
}

void Server::refuse(const ConnectionPtr& connection, vesk::IPC_OPCODE opcode,
                    const Traffic::Admission& admission) {
  vesk::IPCReply refusal(opcode);
  refusal.setResult(vesk::IPC_NOT_AUTHORIZED);
  deliver(connection, &refusal, admission);
}

void Server::carryOut(const ConnectionPtr& connection, const vesk::IPCMessage& request,
                      const Traffic::Admission& admission) {
  auto send = [self = std::weak_ptr<Server*>(m_self), held = std::weak_ptr<Connection>(connection),
               admission](vesk::IPCReply* reply) {
    const auto server = self.lock();
    const auto client = held.lock();
    if (server && client && client->isAnswering()) (*server)->finish(client, reply, admission);
  };
  const std::weak_ptr<Call> call =
      m_dispatcher.carryOut(connection->client(), request, std::move(send), admission.answer);
  if (isServed(connection)) m_connections[connection->fd()].call = call;
}

void Server::finish(const ConnectionPtr& connection, vesk::IPCReply* reply,
                    const Traffic::Admission& admission) {
  deliver(connection, reply, admission);
  serveNext(connection);
}

// Unless serve() is doing it.
void Server::serveNext(const ConnectionPtr& connection) {
  if (m_served != connection.get()) handle(connection, 0);
}

void Server::deliver(const ConnectionPtr& connection, vesk::IPCReply* reply,
                     const Traffic::Admission& admission) {
  try {
    if (!reply) return connection->end();
    const std::string_view message = encode(*reply);
    if (admission.delay.count() > 0 && !m_isStopping) return sendLater(connection, message, admission);
    send(connection, message, admission.mark);
  } catch (const std::exception&) {
    connection->end();
  }
}

void Server::send(const ConnectionPtr& connection, std::string_view message, int mark) {
  try {
    m_traffic.deliver(*connection, message, mark);
  } catch (const std::exception&) {
    connection->end();
  }
}

void Server::sendLater(const ConnectionPtr& connection, std::string_view message,
                       const Traffic::Admission& admission) {
  const auto due = connection->lastProgress() + admission.delay;  // the progress was the request
  m_loop.after(due - EventLoop::Clock::now(),
               [self = std::weak_ptr<Server*>(m_self), held = std::weak_ptr<Connection>(connection),
                message = std::string(message), mark = admission.mark] {
                 const auto server = self.lock();
                 const auto client = held.lock();
                 if (!server || !client || !client->isAnswering()) return;
                 (*server)->send(client, message, mark);
                 (*server)->serveNext(client);
               });
}

/// Waits for the connection's next event, or closes it.
void Server::settle(const ConnectionPtr& connection) {
  if (!isServed(connection)) return;
  if (connection->isFinished()) return remove(connection);
  m_loop.change(connection->fd(), connection->wanted() & (m_isStopping ? EventLoop::kWritable : ~0u));
}

void Server::remove(const ConnectionPtr& connection) {
  m_loop.forget(connection->fd());
  forget(*connection);
  // The descriptor is closed with the last reference to the connection, before the next round.
  m_acceptor.resume();
}

bool Server::isServed(const ConnectionPtr& connection) const {
  const auto entry = m_connections.find(connection->fd());
  return entry != m_connections.end() && entry->second.connection == connection;
}

void Server::logRequest(const Connection& connection, vesk::IPC_OPCODE opcode) const {
  m_log("request " + std::to_string(m_service.statistics.requests + 1) + ", connection " +
        std::to_string(connection.fd()) + " " + ::printable(connection.client()->caller.sessionId) + ": " +
        vesk::IPCMessage::IPC_OPCODEToStr(opcode));
}

void Server::sweepLater() {
  const milliseconds pause = std::max(m_limits.step / kSweepsPerStep, milliseconds(1));
  m_loop.after(pause, [self = std::weak_ptr<Server*>(m_self)] {
    if (const auto server = self.lock()) (*server)->sweep();
  });
}

void Server::sweep() {
  const auto limit = EventLoop::Clock::now() - m_limits.step;
  std::vector<Entry> stuck;
  for (const auto& entry : m_connections) {
    const Connection& connection = *entry.second.connection;
    if (connection.isBusy() && connection.lastProgress() < limit) stuck.push_back(entry.second);
  }
  for (const Entry& entry : stuck) {
    const auto call = entry.connection->isAnswering() ? entry.call.lock() : nullptr;
    if (call) {
      call->timeOut();
    } else {
      entry.connection->end();
      settle(entry.connection);
    }
  }
  sweepLater();
}

void Server::stop() {
  m_isStopping = true;
  m_acceptor.stop();
  m_loop.post([self = std::weak_ptr<Server*>(m_self)] {
    if (const auto server = self.lock()) (*server)->finishReplies();
  });
}

void Server::finishReplies() {
  const auto connections = m_connections;
  for (const auto& entry : connections) settle(entry.second.connection);
  awaitDelivery(kDeliveryRounds);
}

/// Closing before the client has read its last reply would look like a failure.
void Server::awaitDelivery(int rounds) {
  const bool isDelivered = std::all_of(m_connections.begin(), m_connections.end(), [](const auto& entry) {
    return entry.second.connection->isDelivered();
  });
  if (isDelivered || rounds == 0) return m_loop.stop();
  m_loop.after(kDeliveryRound, [self = std::weak_ptr<Server*>(m_self), rounds] {
    if (const auto server = self.lock()) (*server)->awaitDelivery(rounds - 1);
  });
}

}  // namespace brondalt
