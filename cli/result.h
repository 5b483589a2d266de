/// Successes that have nothing to show but themselves.
#pragma once

#include <fokrazo/call_status.h>
#include "cli/exit_status.h"

namespace cli {

class Output;

/// Prints the daemon's result and message.
ExitStatus report(Output& output, const vesk::CallStatus& call);

}  // namespace cli
