/// Finds mistakes in the configuration file that the library ignores or only logs.
#pragma once

#include <string>
#include <vector>

#include "cli/finding.h"

namespace cli {

/// Checks the file and the values that the library reads; keys of other programs are not checked. Returns one
/// finding of state Ok if there are no mistakes.
std::vector<Finding> checkConfiguration(const std::string& path);

}  // namespace cli
