#include <algorithm>
#include <map>
#include <sstream>

#include <fokrazo/strutil.h>
#include "cli/doctor/checks.h"
#include "cli/doctor/module_file.h"
#include "cli/doctor/shell_word.h"
#include "cli/doctor/tampering.h"
#include "cli/doctor/text_file.h"
#include "cli/shown.h"

namespace cli {

namespace {

constexpr char kCheck[] = "name-service";
constexpr char kPath[] = "/etc/nsswitch.conf";
constexpr char kService[] = "fokrazo";
constexpr char kAppend[] =
    "sed -i -E '/^ *(passwd|group|shadow) *:/ s/ *(#.*)?$/ fokrazo/' /etc/nsswitch.conf";

using Words = std::vector<std::string>;

// What depends on each database.
constexpr struct Database {
  const char* name;
  Finding::State whenMissing;  // while another database asks the directory
  const char* consequence;
} kDatabases[] = {
    {"passwd", Finding::Problem, "this host does not know the directory's users"},
    {"group", Finding::Problem, "this host does not know the directory's groups"},
    {"shadow", Finding::Warning, "the password ageing of the directory's users is unknown"},
};

// The services of a database and what to do after each, such as "[NOTFOUND=return]"; see nsswitch.conf(5).
struct Line {
  Words words = {"files"};  // without a line
  bool isThere = false;
};
using Switch = std::map<std::string, Line>;

Switch readSwitch() {
  Switch all;
  for (const Database& row : kDatabases) all[row.name];
  for (std::string line : linesOf(kPath)) {
    line.erase(std::min(line.find('#'), line.size()));
    const size_t colon = line.find(':');
    if (colon == std::string::npos) continue;
    std::istringstream words(line.substr(colon + 1));
    Line& database = all[vesk::trimWhiteSpace(line.substr(0, colon))];
    database.isThere = true;
    database.words.clear();
    for (std::string word; words >> word;) database.words.push_back(word);
  }
  return all;
}

size_t positionOf(const Words& words, const std::string& word) {
  return static_cast<size_t>(std::find(words.begin(), words.end(), word) - words.begin());
}

// The words with the service after the local files.
Words corrected(Words words) {
  words.erase(std::remove(words.begin(), words.end(), kService), words.end());
  size_t local = words.size();
  for (const char* service : {"files", "compat", "systemd"}) {
    const size_t position = positionOf(words, service);
    if (position < words.size()) local = local == words.size() ? position + 1 : std::max(local, position + 1);
  }
  words.insert(words.begin() + static_cast<Words::difference_type>(local), kService);
  return words;
}

// The command that corrects the line, or adds it.
std::string commandFor(const std::string& database, const Line& line) {
  std::string text = database + ':';
  for (const std::string& word : corrected(line.words)) text += ' ' + word;
  if (!line.isThere) return "echo " + shellWord(text) + " >>" + kPath;
  std::string replacement;
  for (const char c : text)
    replacement +=
        std::string("\\/&").find(c) == std::string::npos ? std::string(1, c) : std::string("\\") + c;
  return "sed -i " + shellWord("s/^ *" + database + " *:.*/" + replacement + '/') + ' ' + kPath;
}

// Whether an action such as [NOTFOUND=return] ends the lookup before the service is asked.
bool endsBefore(const Words& words, size_t position) {
  for (size_t i = 0; i < position && i < words.size(); ++i) {
    const std::string action = vesk::lower(words[i]);
    if (action.find("notfound=return") != std::string::npos ||
        action.find("!success=return") != std::string::npos)
      return true;
  }
  return false;
}

void checkDatabase(Findings& findings, const Database& row, const Line& database) {
  const Words& words = database.words;
  const size_t own = positionOf(words, kService);
  const size_t files = std::min(positionOf(words, "files"), positionOf(words, "compat"));
  const std::string line = std::string(kPath) + ": " + row.name;
  if (own == words.size())
    findings.add(row.whenMissing, line + " does not name " + kService + ": " + row.consequence,
                 "add it to the line", commandFor(row.name, database));
  else if (own < files && files < words.size())
    findings.problem(
        line + " names " + kService + " before the local files: every lookup of root waits for the daemon",
        "name the local files first", commandFor(row.name, database));
  else if (endsBefore(words, own))
    findings.problem(line + " never gets to " + kService + ", because an action before it ends the lookup",
                     "name it before the action", commandFor(row.name, database));
}

bool isAsked(const Switch& all) {
  return std::any_of(std::begin(kDatabases), std::end(kDatabases), [&](const Database& row) {
    const Words& words = all.at(row.name).words;
    return positionOf(words, kService) < words.size();
  });
}

}  // namespace

Findings checkNameService(Patient&) {
  Findings findings(kCheck);
  const Switch all = readSwitch();
  const std::string module = findModule(kNameServiceModule);
  if (!isAsked(all)) {
    const std::string text = "this host does not know the directory's accounts: ";
    if (module.empty())
      findings.warn(text + kNameServiceModule.file + " is not installed", "install it, if it should",
                    installCommand(kNameServiceModule));
    else
      findings.warn(text + kPath + " does not name " + kService, "add it, if it should", kAppend);
    return findings;
  }
  checkTampering(findings, kPath);
  for (const Database& row : kDatabases) checkDatabase(findings, row, all.at(row.name));
  if (module.empty())
    findings.problem(
        std::string(kPath) + " names " + kService + ", but there is no " + kNameServiceModule.file,
        "install it", installCommand(kNameServiceModule));
  else
    checkModule(findings, kNameServiceModule, module);
  if (findings.empty()) findings.ok(std::string(kPath) + " names " + kService + ", " + shown(module));
  return findings;
}

}  // namespace cli
