/// Users in findings.
#pragma once

#include <unistd.h>

#include <string>

namespace cli {

/// Describes a user without looking up the name, which would ask the daemon under examination.
inline std::string userText(uid_t uid) {
  if (uid == 0) return "root";
  return "user " + std::to_string(uid) + (uid == geteuid() ? " (you)" : "");
}

}  // namespace cli
