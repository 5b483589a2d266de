/// The configuration file, read as an administrator would like to have it read: aloud.
#pragma once

#include <string>
#include <vector>

#include "cli/finding.h"

namespace cli {

/// What is wrong with the file and with the values that the library reads from it, all of which the library
/// itself passes over with a line in its log or with none. One finding that all is well, if so. Keys of the
/// family's other programs are theirs to judge.
std::vector<Finding> checkConfiguration(const std::string& path);

}  // namespace cli
