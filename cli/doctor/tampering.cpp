#include "cli/doctor/tampering.h"

#include <sys/stat.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>

#include "cli/doctor/shell_word.h"
#include "cli/shown.h"

namespace cli {

namespace {

void addFolders(std::vector<std::string>& folders, const std::string& path) {
  for (size_t end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1)) {
    const std::string folder = path.substr(0, end);
    if (folder.back() != '/' && std::find(folders.begin(), folders.end(), folder) == folders.end())
      folders.push_back(folder);
  }
}

std::string modeText(mode_t mode) {
  char text[8];
  snprintf(text, sizeof text, "%04o", mode & 07777u);
  return text;
}

bool check(Findings& findings, const std::string& path, std::optional<uid_t> alsoTrusted) {
  struct stat info;
  if (stat(path.c_str(), &info) != 0) return true;
  const bool isForeign = info.st_uid != 0 && info.st_uid != alsoTrusted;
  if (isForeign)
    findings.problem(shown(path) + " belongs to user " + std::to_string(info.st_uid) + ", not to root",
                     "find out who that is, then give it to root", "chown root " + shellWord(path));
  const bool isShared = S_ISDIR(info.st_mode) && (info.st_mode & S_ISVTX) != 0;
  const bool isOpen = (info.st_mode & (S_IWGRP | S_IWOTH)) != 0 && !isShared;
  if (isOpen)
    findings.problem(
        shown(path) + " can be changed by users other than its owner (mode " + modeText(info.st_mode) + ")",
        "take the right away", "chmod go-w " + shellWord(path));
  return !isForeign && !isOpen;
}

}  // namespace

std::vector<std::string> foldersAbove(const std::string& path) {
  std::vector<std::string> folders;
  addFolders(folders, path);
  char resolved[PATH_MAX];
  const std::string parent = path.substr(0, path.rfind('/') + 1);
  if (realpath(parent.c_str(), resolved)) addFolders(folders, std::string(resolved) + '/');
  if (realpath(path.c_str(), resolved)) addFolders(folders, resolved);
  return folders;
}

bool checkFolders(Findings& findings, const std::string& path, std::optional<uid_t> alsoTrusted) {
  bool isSafe = true;
  for (const std::string& folder : foldersAbove(path))
    if (!check(findings, folder, alsoTrusted)) isSafe = false;
  return isSafe;
}

bool checkTampering(Findings& findings, const std::string& path, std::optional<uid_t> alsoTrusted) {
  const bool isSafe = checkFolders(findings, path, alsoTrusted);
  return check(findings, path, alsoTrusted) && isSafe;
}

}  // namespace cli
