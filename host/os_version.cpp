#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/utsname.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include <fokrazo/log.h>
#include <fokrazo/osport.h>
#include <fokrazo/osutil.h>
#include "host/release_texts.h"
#include "util/file/file_io.h"

using vesk::Distribution;
using vesk::Open;
using vesk::openFile;
using vesk::UniqueFd;

namespace {

constexpr char kLogger[] = "base.osutil";
constexpr char kProgram[] = "/usr/bin/lsb_release";
constexpr int kProgramSeconds = 10;
constexpr size_t kMaxText = 64 * 1024;  // bytes read of each text; the rest is ignored
constexpr char kReleaseDir[] = "/etc";
constexpr char kUnknown[] = "UNKNOWN";

// /etc/os-release may be a link. Links are not followed, so the usual target is listed too.
constexpr const char* kOsReleaseFiles[] = {"/etc/os-release", "/usr/lib/os-release"};

// Does not follow links. Returns false with errno.
bool readText(const std::string& path, std::string& text) {
  return vesk::readWholeFile(path, Open::Unfollowed, text, kMaxText) || errno == EFBIG;
}

bool distroByOsRelease(Distribution& found) {
  std::string text;
  for (const char* path : kOsReleaseFiles) {
    if (!readText(path, text) && (errno == ENOENT || errno == ELOOP)) continue;
    found = vesk::readOsRelease(text);
    VESK_LOG_TO(kLogger, Debug, "%s: OS=%s version=%s", path, found.os.c_str(), found.version.c_str());
    break;
  }
  return found.isComplete();
}

// The output of lsb_release, run with an empty environment; its exit status is ignored. Returns false if it
// is missing or takes too long.
bool runProgram(std::string& output) {
  char name[] = "lsb_release";
  char option[] = "-a";
  char* arguments[] = {name, option, nullptr};
  const UniqueFd null = openFile("/dev/null", Open::ReadWrite);
  const UniqueFd memory(::memfd_create(name, MFD_CLOEXEC));
  if (!null || !memory) return false;
  int descriptors[] = {null.get(), memory.get(), null.get()};
  constexpr int kWait = 0;
  if (::spawnfv_time(kWait, 3, descriptors, kProgram, arguments, kProgramSeconds, true, true) == -1)
    return false;
  if (::lseek(memory.get(), 0, SEEK_SET) != 0) return false;
  return vesk::readAll(memory.get(), output, kMaxText) || errno == EFBIG;
}

bool distroByProgram(Distribution& found) {
  VESK_LOG_TO(kLogger, Debug, "linuxDistroByCmd: doing '%s'", kProgram);
  std::string output;
  if (!runProgram(output)) {
    VESK_LOG_TO(kLogger, Debug, "linuxDistroByCmd: failed to popen '%s'", kProgram);
    return false;
  }
  VESK_LOG_TO(kLogger, Debug, "%s", output.c_str());
  found = vesk::readLsbRelease(output);
  if (found.isComplete()) return true;
  VESK_LOG_TO(kLogger, Debug, "No os and version found by linuxDistroByCmd.");
  return false;
}

// Silently skips files with other names, and empty ones.
bool readCandidate(const std::string& name, const std::string& path, Distribution& found) {
  const bool isRelease = name.find("release") != std::string::npos;
  if (isRelease ? name.find("lsb-release") != std::string::npos : name.find("version") == std::string::npos)
    return false;
  std::string text;
  if (!readText(path, text) || text.empty()) return false;
  if (vesk::readReleaseFile(name, text, found)) return true;
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

bool distroBySearch(Distribution& found) {
  VESK_LOG_TO(kLogger, Debug, "linuxDistroBySearch start");
  std::vector<std::string> names;
  const UniqueFd directory = openFile(kReleaseDir, Open::Directory);
  if (!directory || !vesk::listDirectory(directory, names)) {
    VESK_LOG_TO(kLogger, Debug, "linuxDistroBySearch: failed to open '%s'", kReleaseDir);
    return false;
  }
  for (const std::string& name : names) {
    const std::string path = std::string(kReleaseDir) + "/" + name;
    if (!isRegularFile(path) || !readCandidate(name, path, found)) continue;
    VESK_LOG_TO(kLogger, Debug, "linuxDistroBySearch: OS=%s version=%s", found.os.c_str(),
                found.version.c_str());
    return true;
  }
  VESK_LOG_TO(kLogger, Debug, "linuxDistroBySearch: OS and version not found");
  return false;
}

}  // namespace

bool linuxDistro(std::string& os, std::string& version) {
  Distribution found;
  if (!distroByOsRelease(found) && !distroByProgram(found) && !distroBySearch(found)) return false;
  os = found.os;
  version = found.version;
  return true;
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
