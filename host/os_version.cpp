#include <dirent.h>
#include <sys/stat.h>
#include <sys/utsname.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>

#include <fokrazo/log.h>
#include <fokrazo/osutil.h>
#include <fokrazo/strutil.h>

namespace {

constexpr char kLogger[] = "base.osutil";
constexpr char kCommand[] = "lsb_release -a 2>/dev/null";
constexpr char kReleaseDir[] = "/etc";
constexpr char kUnknown[] = "UNKNOWN";

/// What is known of the platform so far.
struct Platform {
  std::string os;
  std::string version;
};

bool holds(const std::string& text, const char* part) {
  return text.find(part) != std::string::npos;
}

// One line of lsb_release. The values stand at fixed columns.
void readCommandLine(const std::string& line, Platform& platform) {
  if (holds(line, "Distributor ID:")) platform.os = trimWhiteSpace(line.substr(16));
  if (holds(line, "Release:")) platform.version = trimWhiteSpace(line.substr(9));
  if (holds(line, "Codename:")) platform.version += " (" + trimWhiteSpace(line.substr(10)) + ")";
}

// All that comes, also if a signal interrupts.
std::string readAll(FILE* file) {
  std::string text;
  char block[512];
  for (;;) {
    const size_t count = ::fread(block, 1, sizeof block, file);
    text.append(block, count);
    if (count == sizeof block) continue;
    if (!::ferror(file) || errno != EINTR) return text;
    ::clearerr(file);
  }
}

bool linuxDistroByCmd(std::string& os, std::string& version) {
  VESK_LOG_TO(kLogger, Debug, "linuxDistroByCmd: doing '%s'", kCommand);
  const std::unique_ptr<FILE, int (*)(FILE*)> output(::popen(kCommand, "re"),  // NOLINT(cert-env33-c)
                                                     ::pclose);
  if (!output) {
    VESK_LOG_TO(kLogger, Debug, "linuxDistroByCmd: failed to popen '%s'", kCommand);
    return false;
  }
  Platform found;
  const std::string text = readAll(output.get());
  for (size_t begin = 0, end; begin < text.size(); begin = end) {
    end = std::min(text.find('\n', begin), text.size() - 1) + 1;
    const std::string line = text.substr(begin, end - begin);
    VESK_LOG_TO(kLogger, Debug, "%s", line.c_str());
    readCommandLine(line, found);
  }
  if (found.os.empty() || found.version.empty()) {
    VESK_LOG_TO(kLogger, Debug, "No os and version found by linuxDistroByCmd.");
    return false;
  }
  os = found.os;
  version = found.version;
  return true;
}

// The version in a file of lines such as "VERSION = 10"; empty if there is none.
std::string suseVersion(std::istream& file) {
  std::string line;
  while (std::getline(file, line)) {
    const size_t word = line.find("VERSION");
    if (word == std::string::npos) continue;
    const size_t value = line.find_first_not_of(" =", word + 8);
    return value == std::string::npos ? std::string() : line.substr(value);
  }
  return std::string();
}

// Goes by the first line of a file such as "/etc/redhat-release", and reads on in `file` where more is
// needed.
bool readReleaseFile(const std::string& name, const std::string& line, std::istream& file,
                     Platform& platform) {
  const size_t release = line.find("release");
  const size_t solaris = line.find("Solaris");
  if (release != std::string::npos) {
    platform = {line.substr(0, release > 0 ? release - 1 : 0), line.substr(release + 8)};
  } else if (holds(name, "SuSE") || holds(name, "UnitedLinux")) {
    platform = {"SuSE Linux", suseVersion(file)};
  } else if (holds(name, "gentoo")) {
    platform = {"Gentoo Base System", line.substr(27)};
  } else if (solaris != std::string::npos) {
    const std::string rest = line.substr(solaris + 8);
    platform = {"Solaris", rest.substr(0, rest.find(' '))};
  } else {
    return false;
  }
  return true;
}

bool readVersionFile(const std::string& name, const std::string& line, Platform& platform) {
  if (holds(name, "debian"))
    platform = {"Debian", line};
  else if (holds(name, "slackware"))
    platform = {"Slackware", line.substr(10)};
  else
    return false;
  return true;
}

// Whether the file gives an answer. It is passed over without a word if its name says nothing or it is empty.
bool readCandidate(const std::string& name, const std::string& path, Platform& platform) {
  const bool isRelease = holds(name, "release") && !holds(name, "lsb-release");
  if (!isRelease && !holds(name, "version")) return false;
  std::ifstream file(path);
  std::string line;
  if (!std::getline(file, line)) return false;
  if (isRelease ? readReleaseFile(name, line, file, platform) : readVersionFile(name, line, platform))
    return true;
  VESK_LOG_TO(kLogger, Debug, "linuxDistroBySearch: failed to get os and version strings from file '%s'",
              path.c_str());
  return false;
}

bool isRegularFile(const std::string& path) {
  struct stat info;
  if (::lstat(path.c_str(), &info) == 0) return S_ISREG(info.st_mode);
  VESK_LOG_TO(kLogger, Debug, "linuxDistroBySearch: lstat failed: '%s'", path.c_str());
  return false;
}

bool linuxDistroBySearch(std::string& os, std::string& version) {
  VESK_LOG_TO(kLogger, Debug, "linuxDistroBySearch start");
  const std::unique_ptr<DIR, int (*)(DIR*)> directory(::opendir(kReleaseDir), ::closedir);
  if (!directory) {
    VESK_LOG_TO(kLogger, Debug, "linuxDistroBySearch: failed to open '%s'", kReleaseDir);
    return false;
  }
  while (const dirent* entry = ::readdir(directory.get())) {
    const std::string name = entry->d_name;
    const std::string path = std::string(kReleaseDir) + "/" + name;
    Platform found;
    if (!isRegularFile(path) || !readCandidate(name, path, found)) continue;
    os = found.os;
    version = found.version;
    VESK_LOG_TO(kLogger, Debug, "linuxDistroBySearch: OS=%s version=%s", os.c_str(), version.c_str());
    return true;
  }
  VESK_LOG_TO(kLogger, Debug, "linuxDistroBySearch: OS and version not found");
  return false;
}

}  // namespace

bool linuxDistro(std::string& os, std::string& version) {
  return linuxDistroByCmd(os, version) || linuxDistroBySearch(os, version);
}

void OSVersion(std::string& os, std::string& version) {
  os.clear();
  version.clear();
  linuxDistro(os, version);
  if (!os.empty() && !version.empty()) return;
  utsname system = {};
  if (::uname(&system) != 0) {
    os = version = kUnknown;
    return;
  }
  if (os.empty()) os = system.sysname;
  if (!version.empty()) return;
  const bool isAix = strcmp(system.sysname, "AIX") == 0;
  version = isAix ? std::string(system.version) + "." + system.release : system.release;
}
