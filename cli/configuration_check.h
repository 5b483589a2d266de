/// Finds mistakes in the configuration file that the library ignores, at most with a line in its log.
#pragma once

#include <string>
#include <vector>

#include "cli/finding.h"

namespace cli {

/// Checks the file itself and the values that the library reads from it. Returns one finding of state Ok if
/// there is no mistake. Keys of other programs are not checked.
std::vector<Finding> checkConfiguration(const std::string& path);

}  // namespace cli
