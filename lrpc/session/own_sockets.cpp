#include "lrpc/session/own_sockets.h"

#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

namespace vesk {
namespace ownsockets {

namespace {

std::atomic<ino_t> gInodes[kHighest + 1];  // by descriptor; 0 if it is not a session's
std::atomic<int> gEnd{0};                  // above the highest descriptor ever marked
std::atomic<unsigned long> gForkGeneration{0};

// Runs in the child, where only async-signal-safe calls are allowed.
void closeCopies() {
  const int error = errno;
  gForkGeneration.fetch_add(1, std::memory_order_relaxed);
  for (int fd = 0; fd < gEnd.load(std::memory_order_relaxed); ++fd) {
    const ino_t inode = gInodes[fd].exchange(0, std::memory_order_relaxed);
    if (inode != 0 && isSameSocket(fd, inode)) close(fd);
  }
  errno = error;
}

// At load time, when no other thread can fork meanwhile.
__attribute__((constructor)) void watchForks() {
  pthread_atfork(nullptr, nullptr, closeCopies);
}

}  // namespace

void add(int fd, ino_t inode) {
  if (fd > kHighest) return;
  gInodes[fd].store(inode, std::memory_order_relaxed);
  int end = gEnd.load(std::memory_order_relaxed);
  while (end <= fd && !gEnd.compare_exchange_weak(end, fd + 1, std::memory_order_relaxed)) {
  }
}

// Another thread may already have marked the same number for its own socket.
void remove(int fd, ino_t inode) {
  if (fd <= kHighest) gInodes[fd].compare_exchange_strong(inode, 0, std::memory_order_relaxed);
}

bool isSameSocket(int fd, ino_t inode, ino_t* found) {
  struct stat status;
  const ino_t now = fstat(fd, &status) == 0 ? status.st_ino : 0;
  if (found) *found = now;
  return now != 0 && now == inode && S_ISSOCK(status.st_mode);
}

unsigned long forkGeneration() {
  return gForkGeneration.load(std::memory_order_relaxed);
}

}  // namespace ownsockets
}  // namespace vesk
