// The configuration file: conf get, set, unset, list, keys, variables.

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sstream>

#include <fokrazo/fixed_paths.h>
#include <fokrazo/properties.h>
#include "cli/command.h"
#include "cli/doctor/configuration_keys.h"

namespace cli {

namespace {

using namespace vesk;

struct ConfFile {
  std::string path = paths::kConfigFile;
  Output& output;
};

void requirePlainFile(const ConfFile& file) {
  struct stat info;
  if (stat(file.path.c_str(), &info) != 0) throw std::runtime_error(file.path + ": " + strerror(errno));
  if (S_ISREG(info.st_mode)) return;
  throw std::runtime_error(file.path + (S_ISDIR(info.st_mode) ? ": is a directory" : ": not a regular file"));
}

void readInto(Properties& properties, const ConfFile& file) {
  requirePlainFile(file);
  if (access(file.path.c_str(), R_OK) != 0) throw std::runtime_error(file.path + ": " + strerror(errno));
  properties.load(file.path.c_str(), true);
  if (!properties.loaded()) throw std::runtime_error(file.path + ": not a configuration file");
}

// Parses the default unit of option --time.
char takeUnit(const std::string& text) {
  if (text.size() != 1 || Properties::timeFactor(text[0]) == 0)
    throw UsageError("option --time takes s, m, h, d, w, M or y, not '" + text + "'");
  return text[0];
}

[[noreturn]] void refuseMissing(const ConfFile& file, const std::string& key) {
  throw RefusedError(file.path + " has no key " + shown(key));
}

void printTime(Properties& properties, const ConfFile& file, const std::string& key, char unit) {
  const long seconds = properties.getTime(key, unit, 0);
  file.output.record(Record().text("key", key).number("seconds", seconds), std::to_string(seconds));
}

void printList(Properties& properties, const ConfFile& file, const std::string& key) {
  const Properties::ValueListPtr list = properties.getValueList(key, "");
  if (file.output.json())
    file.output.record(Record().text("key", key).texts("values", *list));
  else
    for (const std::string& item : *list) printf("%s\n", shown(item).c_str());
}

ExitStatus get(Arguments& arguments, const ConfFile& file) {
  std::string unit;
  const bool isTime = arguments.option("--time", unit);
  const bool isList = arguments.flag("--list");
  const std::string key = arguments.operand("a key");
  arguments.done();
  const char unitLetter = isTime ? takeUnit(unit) : 's';

  Properties properties;
  readInto(properties, file);
  std::string value;
  if (!properties.lookup(key, value)) refuseMissing(file, key);
  if (isTime)
    printTime(properties, file, key, unitLetter);
  else if (isList)
    printList(properties, file, key);
  else
    file.output.record(Record().text("key", key).text("value", value), shown(value));
  return kFound;
}

void requireSaved(int result, const std::string& path) {
  if (result == 0) return;
  throw std::runtime_error(path +
                           " was not saved: you need write access to the file and its directory, and no "
                           "other program may hold " +
                           path + ".lock; see the system log");
}

void refuseBadKey(const std::string& key) {
  std::string line;
  if (!Properties::putPropertyToLine(line, key, std::string(), true))
    throw UsageError("'" + key + "' is not a key: it is empty or contains a newline");
}

ExitStatus set(Arguments& arguments, const ConfFile& file) {
  const bool asText = arguments.flag("--text");
  const bool asList = arguments.flag("--list");
  const std::string key = arguments.operand("a key");
  const std::vector<std::string> values = arguments.operands();
  if (values.empty() && !asList) throw UsageError("a value for " + key + " is missing");
  if (values.size() > 1 && !asList) throw UsageError("more than one value for " + key + " needs --list");
  refuseBadKey(key);
  requirePlainFile(file);
  bool accepted = true;
  const int result = Properties::update(file.path, [&](Properties& properties) {
    if (asList)
      properties.setValueList(key, {values.begin(), values.end()}, true);
    else
      accepted = asText ? properties.setText(key, values[0]) : properties.setString(key, values[0]);
    return accepted;
  });
  if (!accepted) throw UsageError("'" + values[0] + "' does not fit on one line of the file");
  requireSaved(result, file.path);
  return kFound;
}

ExitStatus unset(Arguments& arguments, const ConfFile& file) {
  const std::string key = arguments.operand("a key");
  arguments.done();
  requirePlainFile(file);
  bool there = false;
  const int result =
      Properties::update(file.path, [&](Properties& properties) { return there = properties.remove(key); });
  requireSaved(result, file.path);
  if (!there) refuseMissing(file, key);
  return kFound;
}

ExitStatus list(Arguments& arguments, const ConfFile& file) {
  const std::string prefix = arguments.hasOperand() ? arguments.operand("") : "";
  arguments.done();
  Properties properties;
  readInto(properties, file);
  const std::unique_ptr<Properties::Map> entries = properties.getMap(prefix);
  if (!entries)
    throw RefusedError(file.path + " has no keys" +
                       (prefix.empty() ? "" : " that begin with " + shown(prefix)));
  for (const auto& entry : *entries)
    file.output.record(Record().text("key", entry.first).text("value", entry.second),
                       shown(entry.first) + ": " + shown(entry.second));
  return kFound;
}

// Prints the keys that the library reads.
ExitStatus keys(Arguments& arguments, const ConfFile& file) {
  arguments.done();
  for (const std::string& key : libraryKeys()) file.output.record(Record().text("key", key), key);
  return kFound;
}

// Prints the values of the variables of the joined state.
ExitStatus variables(Arguments& arguments, const ConfFile& file) {
  arguments.done();
  for (const char* name : {"JOINNAME", "PREW2KNAME", "SITE", "DOMAIN", "ZONE"}) {
    std::istringstream line(std::string("value = $") + name + "\n");
    Properties properties;
    properties.load(line, true);
    const std::string value = properties.getString("value");
    file.output.record(Record().text("variable", name).text("value", value),
                       std::string(name) + ": " + shown(value));
  }
  return kFound;
}

constexpr struct {
  const char* name;
  ExitStatus (*run)(Arguments& arguments, const ConfFile& file);
} kActions[] = {{"get", get},   {"set", set},   {"unset", unset},
                {"list", list}, {"keys", keys}, {"variables", variables}};

ExitStatus conf(Invocation& invocation) {
  ConfFile file{paths::kConfigFile, invocation.output};
  invocation.arguments.option("--file", file.path);
  const std::string action = invocation.arguments.operand("get, set, unset, list, keys or variables");
  for (const auto& row : kActions)
    if (action == row.name) return row.run(invocation.arguments, file);
  throw UsageError("conf takes get, set, unset, list, keys or variables, not '" + action + "'");
}

constexpr Option kOptions[] = {
    {"--file", "FILE", "use FILE instead of /etc/velmora/velmora.conf"},
    {"--list", nullptr, "get prints, set changes the items of a list"},
    {"--time", "UNIT", "get prints a time in seconds; UNIT applies to a number without one"},
    {"--text", nullptr, "set writes VALUE unescaped: quotes and $ are special"},
};
constexpr char kNotes[] =
    "get KEY prints a value, set KEY VALUE changes it, and unset KEY removes it: its line\n"
    "becomes a comment. list prints all values, or those whose keys begin with PREFIX.\n"
    "keys prints the keys that the library reads; .* stands for a dot and a name of your choice.\n"
    "variables prints the values of $JOINNAME and the other variables.\n";

const Command kCommands[] = {
    {"conf", "get KEY | set KEY VALUE … | unset KEY | list [PREFIX] | keys | variables",
     "read and change the configuration file", conf, kOptions, kNotes},
};

}  // namespace

Family configurationCommands() {
  return {"Change the configuration", kCommands, std::size(kCommands)};
}

}  // namespace cli
