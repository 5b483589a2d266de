/// Reading the system's configuration files.
#pragma once

#include <string>
#include <vector>

namespace cli {

/// The lines of a regular file, without their ends; those of its first million bytes, because no
/// configuration file is larger. None if it is anything else or cannot be read.
std::vector<std::string> linesOf(const std::string& path);

}  // namespace cli
