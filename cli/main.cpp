// fokrazo: the command-line tool. Queries the daemon, and shows the files and values of the system.

#include <signal.h>

#include <clocale>
#include <cstdio>
#include <exception>

#include "cli/global_options.h"
#include "cli/help.h"
#include "cli/run.h"

namespace cli {

namespace {

ExitStatus run(const GlobalOptions& options, Arguments& arguments, Output& output) {
  if (options.version) {
    printf("fokrazo %s\n", FOKRAZO_VERSION);
    return kFound;
  }
  if (options.help) return printHelp(arguments);
  Daemon daemon(options.daemon);
  const std::string name = arguments.operand("a command");
  return runCommand(name, arguments, output, daemon);
}

// Errors in the options themselves are printed as --json asks, wherever it stands.
bool wantsJson(const std::vector<std::string>& words) {
  for (const std::string& word : words) {
    if (word == "--") return false;
    if (word == "--json") return true;
  }
  return false;
}

ExitStatus run(const std::vector<std::string>& words) {
  Output early(wantsJson(words), false);
  return guarded(early, [&] {
    Arguments arguments(words, requireOption);
    const GlobalOptions options = takeGlobalOptions(arguments);
    Output output(options.json, options.verbose);
    return guarded(output, [&] { return run(options, arguments, output); });
  });
}

}  // namespace

}  // namespace cli

int main(int argc, char** argv) {
  signal(SIGCHLD, SIG_DFL);        // if it is ignored, nobody learns how a child has ended
  setlocale(LC_CTYPE, "C.UTF-8");  // for the width of characters; the environment has no say
  const cli::ExitStatus status = cli::run({argv + (argc > 0 ? 1 : 0), argv + argc});
  if (fflush(stdout) == 0 && !ferror(stdout)) return status;
  cli::complain("standard output cannot be written");
  return cli::kFailed;
}
