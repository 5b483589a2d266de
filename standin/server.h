/// The stand-in's socket and all its connections.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <fokrazo/ipc_opcode.h>
#include "standin/faults.h"
#include "standin/service.h"

namespace standin {

class Connection;

/// Serves any number of clients from one thread, none of which can hold up or end the others.
/// SIGTERM and SIGINT end run(), SIGHUP restarts: from the making of a server to its end, they are its own.
class Server {
 public:
  /// Both must outlive the server. `isVerbose`: a line for each request on standard error.
  Server(std::string socketPath, Service& service, Faults& faults, bool isVerbose);
  /// Closes everything and removes the socket.
  ~Server();
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  /// Makes the socket; a client that connects from now on will be served. A socket that is left over from a
  /// process that is gone is replaced.
  /// @throws Error also if another process listens there.
  void open();
  /// Serves until a signal or a client's "stop" ends it. @throws Error
  void run();

 private:
  void pollOnce();
  void accept();
  void serve(Connection& connection);
  void answer(Connection& connection, std::string_view frame);
  void report(Connection& connection, vesk::IPC_OPCODE opcode) const;
  void sendReply(Connection& connection, std::string_view message, Fault fault);
  void removeFinished();
  void awaitDelivery();
  void closeAll();
  void restart();

  std::string m_socketPath;
  Service& m_service;
  Faults& m_faults;
  bool m_isVerbose;
  int m_listener = -1;
  bool m_acceptPauses = false;  // no descriptor was free; wait for a connection to end
  bool m_restartIsWanted = false;
  std::vector<std::unique_ptr<Connection>> m_connections;
};

}  // namespace standin
