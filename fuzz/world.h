/// Sets up the private world for fuzz targets (see tests/support/private_world).
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

/// Writes `text` to the configuration file. Call it before using the library. Aborts outside the private
/// world, because inputs are written to the system's paths.
inline void enterWorld(const std::string& text) {
  if (!testsupport::inPrivateWorld()) {
    fprintf(stderr, "Run this with tests/support/private_world.\n");
    exit(2);
  }
  write(vesk::paths::kConfigFile, text);
}

}  // namespace fuzz
