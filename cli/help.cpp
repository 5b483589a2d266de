#include "cli/help.h"

#include <cstdio>

#include "cli/command.h"
#include "cli/global_options.h"

namespace cli {

namespace {

void describeTool() {
  printf("usage: fokrazo [OPTION …] COMMAND [ARGUMENT …]\n\n%s", helpOf(globalOptions()).c_str());
  for (const Family& family : families()) {
    printf("\n%s:\n", family.title);
    for (const Command& command : family) printf("  %-16s %s\n", command.name, command.summary);
  }
  printf(
      "\n'fokrazo help COMMAND' describes one command. Options may stand anywhere.\n"
      "Exit status: 0 found, true or done; 1 not found, false or refused; 2 wrong usage;\n"
      "3 the daemon cannot be reached, is too slow or not trusted; 4 any other failure.\n");
}

void describe(const Command& command) {
  printf("usage: fokrazo [OPTION …] %s%s%s\n\n%s\n%s%s", command.name, *command.operands ? " " : "",
         command.operands, command.summary, helpOf(command.options).c_str(), command.notes);
}

}  // namespace

ExitStatus printHelp(Arguments& arguments) {
  if (!arguments.hasOperand()) {
    describeTool();
    return kFound;
  }
  describe(commandNamed(arguments.operand("")));
  arguments.done();
  return kFound;
}

}  // namespace cli
