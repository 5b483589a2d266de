#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <set>
#include <sstream>

#include "cli/doctor/checks.h"
#include "cli/doctor/module_file.h"
#include "cli/doctor/shell_word.h"
#include "cli/doctor/tampering.h"
#include "cli/doctor/text_file.h"
#include "cli/shown.h"

namespace cli {

namespace {

constexpr char kFolder[] = "/etc/pam.d";
constexpr size_t kMostModules = 3;  // trying one takes seconds if it hangs

// A line that names the module.
struct Mention {
  std::string file;
  std::string module;  // a path, or only the name
};

// The third field of a line of pam.d(5), after a type and a control such as "required" or "[success=1
// default=die]".
std::string moduleOf(const std::string& line) {
  std::istringstream words(line.substr(0, line.find('#')));
  std::string type;
  std::string word;
  words >> type >> word;
  if (word.compare(0, 1, "[") == 0)
    while (word.find(']') == std::string::npos && words >> word) {
    }
  std::string module;
  words >> module;
  return module;
}

std::string baseName(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

void addMentions(std::vector<Mention>& mentions, const std::string& file) {
  const std::vector<std::string> lines = linesOf(file);
  for (size_t i = 0; i < lines.size(); ++i) {
    std::string line = lines[i];
    while (!line.empty() && line.back() == '\\' && i + 1 < lines.size()) {
      line.back() = ' ';
      line += lines[++i];
    }
    const std::string module = moduleOf(line);
    if (baseName(module) == kPamModule.file) mentions.push_back({file, module});
  }
}

std::vector<Mention> findMentions() {
  std::vector<std::string> names;
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(kFolder), closedir);
  while (const dirent* entry = folder ? readdir(folder.get()) : nullptr) names.emplace_back(entry->d_name);
  std::sort(names.begin(), names.end());
  std::vector<Mention> mentions;
  for (const std::string& name : names) addMentions(mentions, std::string(kFolder) + '/' + name);
  return mentions;
}

void checkMentioned(Findings& findings, const std::vector<Mention>& mentions, const std::string& installed) {
  std::set<std::string> files;
  std::set<std::string> modules;
  for (const Mention& mention : mentions) {
    if (files.insert(mention.file).second) checkTampering(findings, mention.file);
    const std::string module = mention.module[0] == '/' ? mention.module : installed;
    if (modules.size() == kMostModules || !modules.insert(module).second) continue;
    if (module.empty() || access(module.c_str(), F_OK) != 0)
      findings.problem(
          shown(mention.file) + " names " + shown(mention.module) + ", which does not exist: logins may fail",
          "install it, or remove the line", installCommand(kPamModule));
    else
      checkModule(findings, kPamModule, module);
  }
}

}  // namespace

Findings checkPam(Patient&) {
  Findings findings("pam");
  const std::vector<Mention> mentions = findMentions();
  const std::string installed = findModule(kPamModule);
  if (!mentions.empty()) {
    checkMentioned(findings, mentions, installed);
    if (findings.empty())
      findings.ok(shown(mentions.front().module) + ", named by " + shown(mentions.front().file));
    return findings;
  }
  const std::string text = "users of the directory cannot log in here: ";
  if (installed.empty())
    findings.warn(text + kPamModule.file + " is not installed", "install it, if they should",
                  installCommand(kPamModule));
  else
    findings.warn(text + "no file in " + kFolder + " names " + kPamModule.file, "enable it, if they should",
                  "pam-auth-update --enable fokrazo");
  return findings;
}

}  // namespace cli
