// fokrazo: the command-line tool. Queries the daemon, and shows the files and values of the system.

#include <sys/un.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <optional>

#include <fokrazo/error_util.h>
#include <fokrazo/fixed_paths.h>
#include <fokrazo/outcome.h>
#include <fokrazo/properties.h>
#include <fokrazo/propnames.h>
#include "cli/command.h"

namespace cli {

namespace {

const auto& families() {
  static const Family all[] = {lookupCommands(),        listingCommands(), daemonCommands(),
                               accountCommands(),       valueCommands(),   objectCommands(),
                               configurationCommands(), machineCommands(), doctorCommands()};
  return all;
}

const Command* findCommand(const std::string& name) {
  for (const Family& family : families())
    for (const Command& command : family)
      if (name == command.name) return &command;
  return nullptr;
}

void printHelp() {
  printf(
      "usage: fokrazo [--socket PATH] [--json] [--timeout S] [--peer-uid UID] COMMAND …\n\n"
      "  --socket PATH  the daemon's socket (default %s)\n"
      "  --json         print one JSON object per line\n"
      "  --timeout S    wait at most S seconds for the daemon in each step\n"
      "  --peer-uid UID talk only to a daemon that runs as this user (default for passwords: 0)\n",
      vesk::paths::kDaemonSocket);
  for (const Family& family : families()) {
    printf("\n%s:\n", family.title);
    for (const Command& command : family) printf("  %-16s %s\n", command.name, command.summary);
  }
  printf(
      "\nfokrazo COMMAND --help describes one command.\n"
      "Exit status: 0 found, true or done; 1 not found, false or refused; 2 wrong usage;\n"
      "3 the daemon cannot be reached; 4 any other failure.\n");
}

void printHelp(const Command& command) {
  printf("usage: fokrazo [OPTION …] %s%s%s\n\n%s\n%s", command.name, *command.synopsis ? " " : "",
         command.synopsis, command.summary, command.help);
}

// The global options.
struct Settings {
  std::string socketPath = vesk::paths::kDaemonSocket;
  std::string timeout;
  bool hasTimeout = false;
  std::optional<uid_t> peer;
  bool json = false;
  bool help = false;
};

uid_t readUid(const std::string& text) {
  unsigned uid = 0;
  if (!readNumber(text, uid) || uid == static_cast<uid_t>(-1))
    throw UsageError("option --peer-uid needs a user id, not '" + text + "'");
  return uid;
}

Settings takeSettings(Arguments& arguments) {
  Settings settings;
  std::string uid;
  for (;;) {
    if (arguments.leadingFlag("--json"))
      settings.json = true;
    else if (arguments.leadingFlag("--help"))
      settings.help = true;
    else if (arguments.leadingOption("--timeout", settings.timeout))
      settings.hasTimeout = true;
    else if (arguments.leadingOption("--peer-uid", uid))
      settings.peer = readUid(uid);
    else if (!arguments.leadingOption("--socket", settings.socketPath))
      return settings;
  }
}

// A session would truncate the path and connect to another socket.
void refuseLongPath(const std::string& path) {
  constexpr size_t kLongest = sizeof sockaddr_un::sun_path - 1;
  if (path.size() > kLongest)
    throw UsageError("option --socket takes a path of at most " + std::to_string(kLongest) + " bytes, not '" +
                     path + "'");
}

void applyTimeout(const std::string& text) {
  unsigned seconds = 0;
  if (!readNumber(text, seconds) || seconds == 0)
    throw UsageError("option --timeout needs a number of seconds, not '" + text + "'");
  for (const std::string& key : {vesk::PN::LRPC_TIMEOUT, vesk::PN::LRPC_CONNECT_TIMEOUT})
    Props(false, false)->setString(key, text);
}

ExitStatus runCommand(int argc, char** argv) {
  Arguments arguments(std::vector<std::string>(argv + std::min(argc, 1), argv + argc));
  const Settings settings = takeSettings(arguments);
  if (settings.help) {
    printHelp();
    return kFound;
  }
  const std::string name = arguments.action("a command");
  const Command* command = findCommand(name);
  if (!command) throw UsageError("unknown command " + name);
  if (arguments.flag("--help")) {
    printHelp(*command);
    return kFound;
  }
  refuseLongPath(settings.socketPath);
  if (settings.hasTimeout) applyTimeout(settings.timeout);
  Output output(settings.json);
  Daemon daemon(settings.socketPath, settings.peer);
  Invocation invocation{arguments, output, daemon, settings.hasTimeout};
  return command->run(invocation);
}

ExitStatus fail(ExitStatus status, const char* what) {
  complain(what);
  return status;
}

ExitStatus run(int argc, char** argv) {
  try {
    return runCommand(argc, argv);
  } catch (const UsageError& error) {
    complain(error.what());
    fprintf(stderr, "Run fokrazo --help for the list of commands.\n");
    return kUsage;
  } catch (const NoDaemonError& error) {
    return fail(kNoDaemon, error.what());
  } catch (const vesk::ConnectionBrokenException& error) {
    return fail(kNoDaemon, error.what());
  } catch (const vesk::TimeoutException& error) {
    return fail(kNoDaemon, error.what());
  } catch (const RefusedError& error) {
    return fail(kRefused, error.what());
  } catch (const std::exception& error) {
    const vesk::Outcome outcome = vesk::answerOf(error).outcome;
    const bool isRefusal = outcome == vesk::Outcome::NotFound || outcome == vesk::Outcome::Refused;
    return fail(isRefusal ? kRefused : kFailed, error.what());
  }
}

}  // namespace

}  // namespace cli

int main(int argc, char** argv) {
  const cli::ExitStatus status = cli::run(argc, argv);
  if (fflush(stdout) != 0 || ferror(stdout))
    return cli::fail(cli::kFailed, "standard output cannot be written");
  return status;
}
