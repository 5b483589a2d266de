// Descriptions of the operating system: the output of lsb_release, os-release and the release files. An input
// is a byte that selects a file's name, the output up to a byte 0, and the file.

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <vector>

#include <fokrazo/osutil.h>
#include "fuzz/fuzz_input.h"
#include "fuzz/world.h"
#include "host/release_texts.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* kNames[] = {"redhat-release", "SuSE-release",       "gentoo-release",
                                  "release",        "debian_version",     "slackware-version",
                                  "lsb-release",    "UnitedLinux-release"};
bool tellsOfRelease(const std::string& name) {
  return name.find("release") != std::string::npos || name.find("version") != std::string::npos;
}

// Removes the private world's release files.
void clearReleaseFiles() {
  std::vector<fs::path> found;
  for (const fs::directory_entry& entry : fs::directory_iterator("/etc"))
    if (tellsOfRelease(entry.path().filename())) found.push_back(entry.path());
  for (const fs::path& path : found) fs::remove_all(path);
  fuzz::write("/etc/os-release", "");  // hides the machine's own file
}

}  // namespace

// Pretends that the program is missing, so that none runs.
extern "C" int __real_access(const char* path, int mode);
extern "C" int __wrap_access(const char* path, int mode) {
  if (strcmp(path, "/usr/bin/lsb_release") != 0) return __real_access(path, mode);
  errno = ENOENT;
  return -1;
}

static bool prepare() {
  fuzz::enterWorld("log: FATAL\n");
  clearReleaseFiles();
  return true;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool prepared = prepare();
  fuzz::Input input(data, size);
  const std::string path = std::string("/etc/") + kNames[input.byte() % std::size(kNames)];
  const std::string output = input.upTo('\0');
  const std::string file = input.rest();
  fuzz::write(path, file);
  const vesk::Distribution found = vesk::readOsRelease(file);
  FUZZ_CHECK(found.os.size() + found.version.size() <= file.size() + strlen(" ()"));
  std::string os;
  std::string version;
  try {
    vesk::readLsbRelease(output);
  } catch (const std::out_of_range&) {  // the line is too short
  }
  try {
    OSVersion(os, version);
    FUZZ_CHECK(!os.empty());
  } catch (const std::out_of_range&) {  // the line is too short
  }
  unlink(path.c_str());
  return prepared ? 0 : -1;
}
