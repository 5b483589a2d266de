/// The text of --help.
#pragma once

#include "cli/arguments.h"
#include "cli/exit_status.h"

namespace cli {

/// Describes the command that the next operand names, or lists all commands. @throws UsageError
ExitStatus printHelp(Arguments& arguments);

}  // namespace cli
