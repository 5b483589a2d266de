/// A connection that belongs to the library alone. Internal.
#pragma once

#include <string>

#include "util/file/unique_fd.h"

namespace vesk {

/// IPCconnect, but the socket is close-on-exec from birth and its number is above 2: a program that has
/// closed standard output must not write its output to the daemon.
/// @throws as IPCconnect
UniqueFd connectPrivately(const std::string& path);

}  // namespace vesk
