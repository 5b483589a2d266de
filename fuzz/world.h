/// The private world (see tests/support/private_world) as fuzz targets set it up.
#pragma once

#include <linux/magic.h>
#include <sys/vfs.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include <fokrazo/fixed_paths.h>

namespace fuzz {

inline void write(const std::string& path, const std::string& content) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << content;
}

inline std::string read(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// Makes `text` the configuration, before anything of the library is used. Ends the program outside of the
/// private world: inputs become files under the system's own names.
inline void enterWorld(const std::string& text) {
  struct statfs info;
  if (statfs(vesk::paths::kDataDir, &info) != 0 || info.f_type != TMPFS_MAGIC) {
    fprintf(stderr, "To be run by private_world alone.\n");
    exit(2);
  }
  write(vesk::paths::kConfigFile, text);
}

}  // namespace fuzz
