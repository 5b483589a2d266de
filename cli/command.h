/// A command of the tool: a row of a table. The families of commands stand in files of their own.
#pragma once

#include <boost/scoped_ptr.hpp>
#include <string>

#include "cli/arguments.h"
#include "cli/exit_status.h"
#include "cli/output.h"

namespace vesk {
class LocalRpcSession;
}

namespace cli {

/// The one connection of a run, made when a command first asks for it.
class Daemon {
 public:
  explicit Daemon(std::string socketPath);
  ~Daemon();

  /// A connected session. @throws NoDaemonError
  vesk::LocalRpcSession& session();
  const std::string& socketPath() const { return m_socketPath; }

 private:
  std::string m_socketPath;
  boost::scoped_ptr<vesk::LocalRpcSession> m_session;
};

/// What a command works with.
struct Invocation {
  Arguments& arguments;
  Output& output;
  Daemon& daemon;
  bool hasTimeout;  // the command line says how long to wait for the daemon
};

struct Command {
  const char* name;
  const char* synopsis;  // what follows the name
  const char* summary;   // one line
  const char* help;      // the rest of --help, may be empty
  ExitStatus (*run)(Invocation& invocation);
};

/// Rows of a family; `count` is their number.
struct Family {
  const char* title;
  const Command* commands;
  size_t count;

  const Command* begin() const { return commands; }
  const Command* end() const { return commands + count; }
};

Family lookupCommands();
Family listingCommands();
Family daemonCommands();
Family accountCommands();
Family valueCommands();
Family objectCommands();
Family configurationCommands();
Family machineCommands();
Family doctorCommands();

}  // namespace cli
