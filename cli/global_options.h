/// The options that all commands have.
#pragma once

#include <string>

#include "cli/arguments.h"
#include "cli/daemon.h"
#include "cli/option.h"

namespace cli {

struct GlobalOptions {
  DaemonOptions daemon;
  bool json = false;
  bool verbose = false;
  bool help = false;
  bool version = false;
};

/// Takes the global options. @throws UsageError a value is wrong
GlobalOptions takeGlobalOptions(Arguments& arguments);

/// The global options, for --help.
Options globalOptions();
/// Finds an option of any command, by its name or by "-" and its letter; null if there is none.
const Option* findOption(const std::string& name);
/// findOption. @throws UsageError there is no such option; with a suggestion if one is similar
const Option* requireOption(const std::string& name);

}  // namespace cli
