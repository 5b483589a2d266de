/// The sockets of all sessions of the process, which a forked child closes. Internal.
///
/// Lock-free: nothing here can block a fork or the child.
/// Thread-safety: from any thread, and from a signal handler.
#pragma once

#include <sys/types.h>

namespace vesk {
namespace ownsockets {

/// Marks a descriptor, whose socket has that inode, as a session's. A number above kHighest is not marked; in
/// the child its session closes it with the next request.
constexpr int kHighest = (1 << 14) - 1;
void add(int fd, ino_t inode);
/// Removes the mark. Call it after closing the descriptor.
void remove(int fd, ino_t inode);

/// Whether the descriptor is still the socket with that inode. Sets `*found`, unless null, to the
/// descriptor's current inode, 0 if it is closed.
bool isSameSocket(int fd, ino_t inode, ino_t* found = nullptr);

/// The number of forks between the process that loaded the library and this one. Unlike a process id, no
/// ancestor has the same.
unsigned long forkGeneration();

}  // namespace ownsockets
}  // namespace vesk
