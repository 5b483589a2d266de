/// A command of the tool: a row of a table. Each family of commands has a source file of its own.
#pragma once

#include <string>

#include "cli/arguments.h"
#include "cli/daemon.h"
#include "cli/exit_status.h"
#include "cli/output.h"

namespace cli {

/// What a command works with.
struct Invocation {
  Arguments& arguments;
  Output& output;
  Daemon& daemon;
  bool hasTimeout;  // the command line limits how long to wait for the daemon
};

struct Command {
  const char* name;
  const char* synopsis;  // what follows the name
  const char* summary;   // one line
  const char* help;      // the rest of --help, may be empty
  ExitStatus (*run)(Invocation& invocation);
};

/// Commands that --help lists under one title; `count` is their number.
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
