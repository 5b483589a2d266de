/// Runs one command line.
#pragma once

#include <functional>

#include "cli/arguments.h"
#include "cli/daemon.h"
#include "cli/exit_status.h"
#include "cli/output.h"

namespace cli {

/// Calls `task`, and prints the failure that it lets pass. Returns the exit status.
ExitStatus guarded(Output& output, const std::function<ExitStatus()>& task);

/// Runs the command that the first operand names, with the other arguments. @throws Failure
ExitStatus runCommand(Arguments& arguments, Output& output, Daemon& daemon);

}  // namespace cli
