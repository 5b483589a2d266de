/// The commands that look into an account.
#pragma once

#include "cli/command.h"

namespace cli {

ExitStatus id(Invocation& invocation);
ExitStatus check(Invocation& invocation);

}  // namespace cli
