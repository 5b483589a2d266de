/// Whether the program runs in the private world (see the script private_world), where it may change the
/// system's files.
#pragma once

#include <sys/stat.h>

namespace testsupport {

inline bool inPrivateWorld() {
  struct stat info;  // not access(), which a fuzz target replaces
  return stat("/var/.fokrazo-private-world", &info) == 0;
}

}  // namespace testsupport
