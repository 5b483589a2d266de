/// Files of modules, which the C library and PAM load into every program.
#pragma once

#include <string>

#include "cli/doctor/finding.h"

namespace cli {

struct ModuleKind {
  const char* file;       // its name
  const char* subfolder;  // of a folder of libraries: "" or "/security"
  const char* function;   // one that every such module exports
  const char* package;
};

extern const ModuleKind kNameServiceModule;
extern const ModuleKind kPamModule;

/// The path of the module in the first of the system's library folders that has it; empty if none has. The
/// folders are that of the C library, the usual ones, and those of /etc/ld.so.conf.
std::string findModule(const ModuleKind& kind);

/// Adds a problem if others can change the file at `path` or a folder above it; otherwise, if it cannot be
/// loaded, which is tried in a child process within a few seconds.
void checkModule(Findings& findings, const ModuleKind& kind, const std::string& path);

/// The command that installs the module.
std::string installCommand(const ModuleKind& kind);

}  // namespace cli
