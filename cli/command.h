/// The tool's commands, as tables. Each family of commands has its own source file.
#pragma once

#include <string>

#include "cli/arguments.h"
#include "cli/daemon.h"
#include "cli/exit_status.h"
#include "cli/output.h"

namespace cli {

/// The context of a command.
struct Invocation {
  Arguments& arguments;
  Output& output;
  Daemon& daemon;
  bool hasTimeout;  // --timeout was given
};

struct Command {
  const char* name;
  const char* synopsis;  // the arguments after the name
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
