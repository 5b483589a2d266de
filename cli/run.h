/// Runs one command line.
#pragma once

#include <functional>
#include <string>

#include "cli/arguments.h"
#include "cli/daemon.h"
#include "cli/exit_status.h"
#include "cli/output.h"

namespace cli {

/// Calls `task`, and prints the failure that it lets pass. Returns the exit status.
ExitStatus guarded(Output& output, const std::function<ExitStatus()>& task);

/// Runs the command with this name. @throws Failure
ExitStatus runCommand(const std::string& name, Arguments& arguments, Output& output, Daemon& daemon);

}  // namespace cli
