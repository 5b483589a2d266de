/// How fuzz targets set up the private world (see tests/support/private_world).
#pragma once

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include <fokrazo/fixed_paths.h>
#include "tests/support/private_world.h"

namespace fuzz {

inline void write(const std::string& path, const std::string& content) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << content;
}

inline std::string read(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// Makes `text` the configuration. Call it before the library is used. Ends the program outside the private
/// world, because inputs become files under the system's own names.
inline void enterWorld(const std::string& text) {
  if (!testsupport::inPrivateWorld()) {
    fprintf(stderr, "Run this with tests/support/private_world.\n");
    exit(2);
  }
  write(vesk::paths::kConfigFile, text);
}

}  // namespace fuzz
