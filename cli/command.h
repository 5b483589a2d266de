/// The tool's commands, as tables. Each family of commands has its own source file.
#pragma once

#include <string>
#include <vector>

#include "cli/arguments.h"
#include "cli/daemon.h"
#include "cli/exit_status.h"
#include "cli/failure.h"
#include "cli/option.h"
#include "cli/output.h"

namespace cli {

/// The context of a command.
struct Invocation {
  Arguments& arguments;
  Output& output;
  Daemon& daemon;
};

struct Command {
  const char* name;
  const char* operands;  // the arguments other than options
  const char* summary;   // one line
  ExitStatus (*run)(Invocation& invocation);
  Options options;
  const char* notes = "";  // the rest of --help
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
Family inspectionCommands();
Family daemonCommands();
Family accountCommands();
Family valueCommands();
Family objectCommands();
Family configurationCommands();
Family machineCommands();
Family doctorCommands();
Family watchCommands();
Family scriptCommands();
Family helpCommands();

/// All families, in the order of --help.
const std::vector<Family>& families();
/// The command with this name. @throws UsageError there is none; with a suggestion if one is similar
const Command& commandNamed(const std::string& name);

}  // namespace cli
