#include "cli/global_options.h"

#include <sys/un.h>

#include <fokrazo/fixed_paths.h>
#include "cli/command.h"
#include "cli/did_you_mean.h"

namespace cli {

namespace {

constexpr std::chrono::seconds kDeadline(30);
constexpr unsigned kLongestTimeout = 24 * 60 * 60;

constexpr Option kGlobal[] = {
    {"--socket", "PATH", "the daemon's socket (default /var/velmora/daemon)"},
    {"--json", nullptr, "print one JSON object per line, errors too"},
    {"--timeout", "S", "wait at most S seconds for the daemon (default 30)"},
    {"--peer-uid", "UID", "talk only to a daemon that runs as this user (default for\npasswords: 0)"},
    {"--verbose", nullptr, "print more about a failure", 'v'},
    {"--help", nullptr, "print this help, or that of the command", 'h'},
    {"--version", nullptr, "print the version"},
};

uid_t readUid(const std::string& text) {
  unsigned uid = 0;
  if (!readNumber(text, uid) || uid == static_cast<uid_t>(-1))
    throw UsageError("option --peer-uid needs a user id, not '" + text + "'");
  return uid;
}

std::chrono::milliseconds readTimeout(const std::string& text) {
  unsigned seconds = 0;
  if (!readNumber(text, seconds) || seconds == 0 || seconds > kLongestTimeout)
    throw UsageError("option --timeout needs a number of seconds from 1 to " +
                     std::to_string(kLongestTimeout) + ", not '" + text + "'");
  return std::chrono::seconds(seconds);
}

// A longer path would be cut, and lead to another socket.
void requireSocketPath(const std::string& path) {
  constexpr size_t kLongest = sizeof sockaddr_un::sun_path - 1;
  if (path.empty() || path.size() > kLongest)
    throw UsageError("option --socket takes a path of 1 to " + std::to_string(kLongest) + " bytes, not '" +
                     path + "'");
}

bool isNamed(const Option& option, const std::string& name) {
  return name == option.name || (option.letter != '\0' && name == std::string("-") + option.letter);
}

std::vector<Options> allOptions() {
  std::vector<Options> all = {globalOptions()};
  for (const Family& family : families())
    for (const Command& command : family) all.push_back(command.options);
  return all;
}

}  // namespace

Options globalOptions() {
  return kGlobal;
}

const Option* findOption(const std::string& name) {
  for (const Options& options : allOptions())
    for (const Option& option : options)
      if (isNamed(option, name)) return &option;
  return nullptr;
}

const Option* requireOption(const std::string& name) {
  if (const Option* option = findOption(name)) return option;
  std::vector<std::string> names;
  for (const Options& options : allOptions())
    for (const Option& option : options) names.emplace_back(option.name);
  const std::string similar = closest(name, names);
  throw UsageError("unknown option " + name + (similar.empty() ? "" : "; did you mean " + similar + "?"));
}

GlobalOptions takeGlobalOptions(Arguments& arguments) {
  GlobalOptions options;
  options.json = arguments.flag("--json");
  options.verbose = arguments.flag("--verbose");
  options.help = arguments.flag("--help");
  options.version = arguments.flag("--version");
  DaemonOptions& daemon = options.daemon;
  daemon.socketPath = vesk::paths::kDaemonSocket;
  daemon.deadline = kDeadline;
  std::string text;
  if (arguments.option("--socket", daemon.socketPath)) requireSocketPath(daemon.socketPath);
  if (arguments.option("--timeout", text)) daemon.deadline = readTimeout(text);
  if (arguments.option("--peer-uid", text)) daemon.peer = readUid(text);
  return options;
}

}  // namespace cli
