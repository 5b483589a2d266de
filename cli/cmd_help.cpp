// help: describes the tool and its commands.

#include "cli/command.h"
#include "cli/help.h"

namespace cli {

namespace {

ExitStatus help(Invocation& invocation) {
  return printHelp(invocation.arguments);
}

const Command kCommands[] = {
    {"help", "[COMMAND]", "list the commands, or describe one", help, {}},
};

}  // namespace

Family helpCommands() {
  return {"Help", kCommands, std::size(kCommands)};
}

}  // namespace cli
