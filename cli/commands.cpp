#include "cli/command.h"
#include "cli/did_you_mean.h"

namespace cli {

const std::vector<Family>& families() {
  static const std::vector<Family> all = {
      lookupCommands(), listingCommands(), inspectionCommands(),    daemonCommands(),  accountCommands(),
      valueCommands(),  objectCommands(),  configurationCommands(), machineCommands(), doctorCommands(),
      watchCommands(),  scriptCommands(),  helpCommands(),
  };
  return all;
}

const Command& commandNamed(const std::string& name) {
  std::vector<std::string> names;
  for (const Family& family : families())
    for (const Command& command : family) {
      if (name == command.name) return command;
      names.emplace_back(command.name);
    }
  const std::string similar = closest(name, names);
  throw UsageError("unknown command " + name + (similar.empty() ? "" : "; did you mean " + similar + "?"));
}

}  // namespace cli
