#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "cli/doctor/checks.h"
#include "cli/doctor/shell_word.h"
#include "cli/doctor/tampering.h"
#include "cli/doctor/user_text.h"
#include "cli/shown.h"

namespace cli {

namespace {

constexpr char kStart[] = "systemctl start brondalt";

bool mayAccess(const std::string& path, int mode) {
  return faccessat(AT_FDCWD, path.c_str(), mode, AT_EACCESS) == 0;
}

std::string absolute(const std::string& path) {
  char folder[PATH_MAX];
  return path.compare(0, 1, "/") == 0 || !getcwd(folder, sizeof folder) ? path
                                                                        : std::string(folder) + '/' + path;
}

void reportMissing(Findings& findings, const std::string& path, int error) {
  if (error == EACCES)
    for (const std::string& folder : foldersAbove(path))
      if (!mayAccess(folder, X_OK))
        return findings.problem("this user may not enter " + shown(folder), "let every user enter it",
                                "chmod a+x " + shellWord(folder));
  findings.problem(shown(path) + ": " + strerror(error),
                   "start the daemon; if it runs, name its socket with --socket", kStart);
}

// In a shared folder others cannot replace the socket, but they can be there before it.
void checkFolder(Findings& findings, const std::string& path) {
  const std::string folder = path.substr(0, path.rfind('/'));
  struct stat info;
  if (stat((folder + '/').c_str(), &info) != 0 || (info.st_mode & S_IWOTH) == 0 ||
      (info.st_mode & S_ISVTX) == 0)
    return;
  findings.warn("every user can create a socket in " + shown(folder) + " while the daemon is away",
                "use a folder that only the daemon can write", "chmod o-w " + shellWord(folder));
}

void checkNode(Findings& findings, const std::string& path, const struct stat& info) {
  char mode[8];
  snprintf(mode, sizeof mode, "%04o", info.st_mode & 07777u);
  const std::string text = shown(path) + ", owned by " + userText(info.st_uid) + ", mode " + mode;
  const std::string allow = "chmod a+rw " + shellWord(path);
  const bool isForeign = info.st_uid != 0 && info.st_uid != geteuid();
  if (isForeign)
    findings.warn(text, "find out who that is first, because every password goes there",
                  "ss -xlp src " + shellWord(path));
  if (!mayAccess(path, W_OK))
    findings.problem(text + ": this user may not open it", "let every user write to it", allow);
  else if (!isForeign && (info.st_mode & 0222u) != 0222u)
    findings.warn(text, "not every user can write to it: give them the right, or restart the daemon", allow);
  else if (!isForeign)
    findings.ok(text);
}

}  // namespace

Findings checkSocket(Patient& patient) {
  Findings findings("socket");
  const std::string path = absolute(patient.daemon.socketPath());
  checkFolders(findings, path, geteuid());
  checkFolder(findings, path);
  struct stat info;
  if (stat(path.c_str(), &info) != 0) {
    patient.state = Patient::Away;
    reportMissing(findings, path, errno);
  } else if (!S_ISSOCK(info.st_mode)) {
    patient.state = Patient::Away;
    findings.problem(
        shown(path) + " is not a socket", "move it away and restart the daemon",
        "mv " + shellWord(path) + ' ' + shellWord(path + ".old") + " && systemctl restart brondalt");
  } else {
    checkNode(findings, path, info);
    if (!mayAccess(path, W_OK)) patient.state = Patient::Away;
  }
  return findings;
}

}  // namespace cli
