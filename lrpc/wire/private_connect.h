/// Connections for the library's own use. Internal.
#pragma once

#include <string>

#include "util/file/unique_fd.h"

namespace vesk {

/// As IPCconnect, but the socket is always close-on-exec and its number is above 2: a program that has closed
/// standard output must not write its output to the daemon.
/// @throws as IPCconnect
UniqueFd connectPrivately(const std::string& path);

}  // namespace vesk
