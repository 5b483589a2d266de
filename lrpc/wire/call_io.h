/// The socket's waits within the limits of a call. Internal. `call` is null for a session's own step
/// time-outs.
#pragma once

#include <string>

#include "util/file/unique_fd.h"

namespace vesk {

struct CallProgress;

/// IPCconnect, but the socket is close-on-exec from birth and its number is above 2: a program that has
/// closed standard output must not write its output to the daemon. A call waits for a daemon that is too busy
/// to accept.
/// @throws as IPCconnect
UniqueFd connectPrivately(const std::string& path, CallProgress* call);

/// readMsg, readN and writeN. @throws as they; TimeoutException also if the call must stop, which it then
/// notes
unsigned int receiveWithin(int fd, void* buffer, unsigned int size, CallProgress* call);
void readWithin(int fd, unsigned char* buffer, unsigned int count, CallProgress* call);
void writeWithin(int fd, unsigned char* buffer, unsigned int count, CallProgress* call);

}  // namespace vesk
