/// A result of the daemon on its way to the exit status.
#pragma once

#include "cli/exit_status.h"

namespace vesk {
class LocalRpcSession;
}

namespace cli {

class Output;

/// Prints a result with the daemon's own message, if it sent one; 0 is success, anything else a refusal.
ExitStatus report(Output& output, const vesk::LocalRpcSession& session, int result);

}  // namespace cli
