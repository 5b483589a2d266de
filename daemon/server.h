/// All connections of a daemon.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "daemon/acceptor.h"
#include "daemon/connection.h"
#include "daemon/dispatcher.h"
#include "daemon/event_loop.h"
#include "daemon/listening_socket.h"
#include "daemon/service.h"
#include "daemon/traffic.h"

namespace brondalt {

/// Limits for each client, and for each user.
struct Limits {
  /// A longer request ends the connection.
  size_t frameBytes = 1 << 20;
  /// The time for a client to send the rest of a request or to accept more of a reply, before its connection
  /// is closed; and for the back end to answer, before the client gets "server unreachable".
  std::chrono::milliseconds step = std::chrono::minutes(5);
  /// The most connections of one user; further ones are closed at once. 0 for no limit. Without one, a single
  /// user could take all of the daemon's descriptors.
  size_t connectionsOfUser = 4096;
};

/// Serves any number of clients on a loop. No client can delay or disconnect the others: each has one active
/// request and one turn per round of the loop.
/// Thread-safety: the loop's thread.
class Server {
 public:
  using Log = std::function<void(const std::string& line)>;

  /// Begins to accept clients; they are served once the loop runs. All references must outlive the server.
  /// `log`, unless empty, receives a line for each request and each failure, without secrets.
  Server(EventLoop& loop, ListeningSocket& socket, Service& service, Traffic& traffic, const Limits& limits,
         Log log = {});
  ~Server();
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  /// Closes all connections and listens on a new socket, as a restarted daemon would, and returns true. If
  /// there is no new socket, logs why, changes nothing and returns false. Also returns false after a client
  /// has stopped the daemon, while the last replies are delivered.
  bool restart();

 private:
  using ConnectionPtr = std::shared_ptr<Connection>;
  struct Entry {
    ConnectionPtr connection;
    std::weak_ptr<Call> call;  // while it is answering
  };

  bool listenAgain();
  void add(Descriptor fd);
  bool mayConnect(unsigned uid) const;
  void forget(const Connection& connection);
  void handle(const ConnectionPtr& connection, unsigned events);
  void serve(const ConnectionPtr& connection);
  void answer(const ConnectionPtr& connection, std::string_view message);
  void carryOut(const ConnectionPtr& connection, const vesk::IPCMessage& request,
                const Traffic::Admission& admission);
  void refuse(const ConnectionPtr& connection, vesk::IPC_OPCODE opcode, const Traffic::Admission& admission);
  void finish(const ConnectionPtr& connection, vesk::IPCReply* reply, const Traffic::Admission& admission);
  void deliver(const ConnectionPtr& connection, vesk::IPCReply* reply, const Traffic::Admission& admission);
  void send(const ConnectionPtr& connection, std::string_view message, int mark);
  void sendLater(const ConnectionPtr& connection, std::string_view message,
                 const Traffic::Admission& admission);
  void serveNext(const ConnectionPtr& connection);
  void settle(const ConnectionPtr& connection);
  void remove(const ConnectionPtr& connection);
  bool isServed(const ConnectionPtr& connection) const;
  void logRequest(const Connection& connection, vesk::IPC_OPCODE opcode) const;
  void sweepLater();
  void sweep();
  void stop();
  void finishReplies();
  void awaitDelivery(int rounds);

  EventLoop& m_loop;
  Service& m_service;
  Traffic& m_traffic;
  Limits m_limits;
  Log m_log;
  Dispatcher m_dispatcher;
  Acceptor m_acceptor;
  std::unordered_map<int, Entry> m_connections;              // by descriptor
  std::unordered_map<unsigned, size_t> m_connectionsOfUser;  // how many of them are a user's, by uid
  const Connection* m_served = nullptr;                      // the one that serve() is working on
  bool m_isStopping = false;
  std::shared_ptr<Server*> m_self;  // held weakly by tasks and completions, which may outlive this object
};

}  // namespace brondalt
