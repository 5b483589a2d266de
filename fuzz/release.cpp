// What tells of the operating system: the output of lsb_release, and the release files. An input is the first
// byte for a file's name, the output up to a byte 0, and the file.

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <vector>

#include <fokrazo/osutil.h>
#include "fuzz/fuzz_input.h"
#include "fuzz/world.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* kNames[] = {"redhat-release", "SuSE-release",       "gentoo-release",
                                  "release",        "debian_version",     "slackware-version",
                                  "lsb-release",    "UnitedLinux-release"};
std::string gOutput;

bool tellsOfRelease(const std::string& name) {
  return name.find("release") != std::string::npos || name.find("version") != std::string::npos;
}

// Of the world's release files only ours are left.
void clearReleaseFiles() {
  std::vector<fs::path> found;
  for (const fs::directory_entry& entry : fs::directory_iterator("/etc"))
    if (tellsOfRelease(entry.path().filename())) found.push_back(entry.path());
  for (const fs::path& path : found) fs::remove_all(path);
}

}  // namespace

// In place of a shell that runs lsb_release.
extern "C" FILE* __wrap_popen(const char*, const char*) {
  return gOutput.empty() ? nullptr : fmemopen(&gOutput[0], gOutput.size(), "r");
}
extern "C" int __wrap_pclose(FILE* file) {
  return fclose(file);
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
  gOutput = input.upTo('\0');
  fuzz::write(path, input.rest());
  std::string os;
  std::string version;
  try {
    OSVersion(os, version);
    FUZZ_CHECK(!os.empty());
  } catch (const std::out_of_range&) {  // a line too short for its kind
  }
  unlink(path.c_str());
  return prepared ? 0 : -1;
}
