/// The sockets of all sessions of the process, so that the child of a fork closes its copies. Internal.
///
/// There is no lock: nothing here can make a fork wait, or leave a child waiting.
/// Thread-safety: from any thread, and from a signal handler.
#pragma once

#include <sys/types.h>

namespace vesk {
namespace ownsockets {

/// Marks a descriptor, the socket with that inode, as a session's. A number above kHighest is not marked; its
/// session closes it in the child with its next request.
constexpr int kHighest = (1 << 14) - 1;
void add(int fd, ino_t inode);
/// Removes the mark. Call it after closing the descriptor.
void remove(int fd, ino_t inode);

/// Whether the descriptor is still the socket with that inode, not something that has reused its number. With
/// `found`, stores the inode that the descriptor has now, 0 if it is closed.
bool isStill(int fd, ino_t inode, ino_t* found = nullptr);

/// The number of forks between the first process that loaded the library and this one. Unlike a process id,
/// it is never that of an ancestor.
unsigned long forkGeneration();

}  // namespace ownsockets
}  // namespace vesk
