// This machine's state, without the daemon: setting, joined, os.

#include <cstring>
#include <set>

#include <fokrazo/error_util.h>
#include <fokrazo/fixed_paths.h>
#include <fokrazo/kset.h>
#include <fokrazo/osutil.h>
#include <fokrazo/path.h>
#include <fokrazo/setting.h>
#include "cli/command.h"

namespace cli {

namespace {

using namespace vesk;

ExitStatus printSetting(Output& output, const std::string& name, const std::string& value) {
  output.record(Record().text("name", name).text("value", value), shown(name) + ": " + shown(value));
  return kFound;
}

// Adds the names of the settings in a directory, except files that are still being written.
void addSettings(const std::string& dir, bool (*isWanted)(const char*), std::set<std::string>& names) {
  const Path directory(dir);
  if (!Path::exists(directory)) return;
  for (directory_iterator entry(directory); entry != directory_iterator::end(); ++entry) {
    const std::string leaf = entry->leaf();
    if (isWanted(leaf.c_str()) && leaf.find(paths::kKSetTemporary) == std::string::npos)
      names.insert(leaf.substr(strlen(paths::kKSetPrefix)));
  }
}

std::set<std::string> settingNames() {
  std::set<std::string> names;
  addSettings(getDataDir(), KSets::isKSetFile, names);
  addSettings(getDataDir() + paths::kUserDir, KSets::isKSetDCFile, names);
  return names;
}

ExitStatus listSettings(Output& output) {
  ExitStatus status = kFound;
  for (const std::string& name : settingNames()) {
    try {
      printSetting(output, name, loadSetting(name, false));
    } catch (const VESKException& error) {
      output.fail(Failure(kFailed, "setting " + name + ": " + error.what()));
      status = kFailed;
    }
  }
  return status;
}

ExitStatus getSetting(Output& output, const std::string& name) {
  try {
    const std::string value = loadSetting(name, false);
    output.record(Record().text("name", name).text("value", value), shown(value));
    return kFound;
  } catch (const IOException& error) {
    if (settingNames().count(name) == 0) throw RefusedError("there is no setting " + shown(name));
    throw Failure(kFailed, error.what());
  }
}

ExitStatus setting(Invocation& invocation) {
  const std::string action = invocation.arguments.operand("get or list");
  if (action == "get") {
    const std::string name = invocation.arguments.operand("a setting's name");
    invocation.arguments.done();
    return getSetting(invocation.output, name);
  }
  if (action != "list") throw UsageError("setting takes get or list, not '" + action + "'");
  invocation.arguments.done();
  return listSettings(invocation.output);
}

ExitStatus joinedState(Invocation& invocation) {
  invocation.arguments.done();
  if (!joined()) {
    invocation.output.record(Record().boolean("joined", false), "not joined");
    return kRefused;
  }
  const std::string domain = GetSetting(SETTING_DOMAIN_NAME, "");
  const std::string host = longJoinedHostName();
  invocation.output.record(Record().boolean("joined", true).text("domain", domain).text("host", host),
                           "joined to " + shown(domain) + " as " + shown(host));
  return kFound;
}

ExitStatus os(Invocation& invocation) {
  invocation.arguments.done();
  std::string name;
  std::string version;
  OSVersion(name, version);
  invocation.output.record(
      Record().text("os", name).text("version", version).text("host", longLocalHostName()),
      shown(name) + ' ' + shown(version));
  return kFound;
}

const Command kCommands[] = {
    {"setting", "get NAME | list", "show the machine's settings", setting, {}},
    {"joined", "", "check whether this machine is joined to a domain", joinedState, {}},
    {"os", "", "show the operating system's name and version", os, {}},
};

}  // namespace

Family machineCommands() {
  return {"Inspect this machine", kCommands, std::size(kCommands)};
}

}  // namespace cli
