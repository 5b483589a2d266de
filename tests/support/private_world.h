/// Whether the program runs in the private world (see the script private_world), where it may change the
/// system's files.
#pragma once

#include <unistd.h>

namespace testsupport {

inline bool inPrivateWorld() {
  return access("/var/.fokrazo-private-world", F_OK) == 0;
}

}  // namespace testsupport
