#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>

#include <fokrazo/fixed_paths.h>
#include <fokrazo/properties.h>
#include <fokrazo/secure_open.h>
#include "cli/doctor/checks.h"
#include "cli/doctor/configuration_keys.h"
#include "cli/doctor/shell_word.h"
#include "cli/doctor/tampering.h"
#include "cli/shown.h"

namespace cli {

using namespace vesk;

namespace {

constexpr const char* kPath = paths::kConfigFile;

std::string createFile(const std::string& path) {
  return "install -D -m 644 /dev/null " + shellWord(path);
}

// A basic regular expression that matches this text alone.
std::string pattern(const std::string& text) {
  std::string out;
  for (const char c : text)
    out += std::string("\\.*[]^$/").find(c) == std::string::npos ? std::string(1, c) : std::string("\\") + c;
  return out;
}

// If several lines have the same key, the library silently uses the last.
void checkLines(std::istream& stream, Findings& findings) {
  std::map<std::string, int, StringCaseLessThan> counts;
  std::string line;
  std::string key;
  std::string value;
  while (stream) {
    Properties::getLine(stream, line);
    if (Properties::getPropertyFromLine(line, key, value) && ++counts[key] == 2)
      findings.warn(shown(key) + " occurs more than once; only the last line applies",
                    "remove the other lines", "grep -in " + shellWord("^ *" + pattern(key)) + ' ' + kPath);
  }
}

struct Refusal {
  int status;
  const char* text;
  const char* command;  // before the path
};

constexpr Refusal kRefusals[] = {
    {SECURE_OPEN_MISSING, "does not exist", "install -D -m 644 /dev/null "},
    {SECURE_OPEN_DENIED, "cannot be read by this user", "chmod a+r "},
    {SECURE_OPEN_SYMLINK, "is a symbolic link", "readlink -f "},
    {SECURE_OPEN_HARDLINKED, "has more than one hard link", "find / -xdev -samefile "},
    {SECURE_OPEN_FOREIGN_OWNER, "does not belong to root", "chown root "},
    {SECURE_OPEN_WORLD_WRITABLE, "can be changed by every user", "chmod o-w "},
};
constexpr Refusal kOtherRefusal = {SECURE_OPEN_FAILED, "cannot be read", "ls -ld "};

const Refusal& refusalOf(int status) {
  for (const Refusal& row : kRefusals)
    if (row.status == status) return row;
  return kOtherRefusal;
}

void checkReference(const std::string& key, const std::string& value, Findings& findings) {
  const std::string path = Properties::getFileNameFromFileReference(value);
  int status = 0;
  const std::unique_ptr<FILE, int (*)(FILE*)> file(SecureOpenForReading(path.c_str(), &status), fclose);
  if (file) return;
  const Refusal& refusal = refusalOf(status);
  findings.problem(shown(key) + ": " + shown(path) + ' ' + refusal.text,
                   "make it a regular file that root owns and only root can change",
                   refusal.command + shellWord(path));
}

void checkUnknown(const std::string& key, Findings& findings) {
  const std::string meant = meantKey(key);
  if (!meant.empty())
    findings.warn(
        shown(key) + " is not a known key; did you mean " + shown(meant) + '?', "correct its name",
        "sed -i " + shellWord("s/^ *" + pattern(key) + "\\([ :=]\\)/" + meant + "\\1/I") + ' ' + kPath);
  else if (isLibraryFamily(key))
    findings.warn(shown(key) + " is not a key of the library", "look up its name, or remove it",
                  "man 5 velmora.conf");
}

void checkValue(const std::string& key, const std::string& value, Findings& findings) {
  if (Properties::isFileReference(value)) return checkReference(key, value, findings);
  const ConfigurationKey* row = findKey(key);
  const std::string expected = !row || value.empty() ? "" : expectedInstead(*row, value);
  if (!expected.empty())
    findings.problem(
        shown(key) + ": '" + shown(value) + "' is not " + expected,
        "correct it, for example to the default; until then the default or part of the value applies",
        "fokrazo conf set " + shellWord(key) + ' ' + row->usual);
  else if (!row && (isLibraryFamily(key) || !isKnownKey(key)))
    checkUnknown(key, findings);
}

void checkContents(Findings& findings) {
  std::ifstream stream(kPath);
  if (!stream)
    return findings.problem(std::string(kPath) + ": " + strerror(errno), "let every user read it",
                            std::string("chmod a+r ") + kPath);
  checkLines(stream, findings);
  Properties properties;
  properties.load(kPath, true);
  if (const std::unique_ptr<Properties::Map> entries = properties.getMap(""))
    for (const auto& entry : *entries) checkValue(entry.first, entry.second, findings);
}

}  // namespace

Findings checkConfiguration(Patient&) {
  Findings findings("configuration");
  const std::string path = kPath;
  struct stat info;
  if (stat(kPath, &info) != 0) {
    findings.warn(path + ": " + strerror(errno) + "; every key has its default", "create it; it may be empty",
                  createFile(path));
  } else if (!S_ISREG(info.st_mode)) {
    findings.problem(path + " is not a regular file", "replace it with a regular file; it may be empty",
                     "mv " + path + ' ' + path + ".old && " + createFile(path));
  } else {
    checkTampering(findings, path);
    checkContents(findings);
    if (findings.empty()) findings.ok(path);
  }
  return findings;
}

}  // namespace cli
