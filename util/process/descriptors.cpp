#include "util/process/descriptors.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace vesk {
namespace descriptors {

namespace {

bool isKept(const int* kept, std::size_t count, int fd) {
  return std::binary_search(kept, kept + count, fd);
}

// The number in `text`; -1 for other text, such as "." and "..".
int parseDescriptor(const char* text) {
  if (*text < '0' || *text > '9') return -1;
  int fd = 0;
  for (; *text >= '0' && *text <= '9'; ++text) fd = fd * 10 + (*text - '0');
  return fd;
}

#if defined(SYS_close_range)
bool closeRange(unsigned int first, unsigned int last) {
  return first > last || syscall(SYS_close_range, first, last, 0) == 0;
}
#endif

#if defined(SYS_getdents64)
// The kernel's layout.
struct DirectoryEntry {
  std::uint64_t inode;
  std::int64_t offset;
  unsigned short length;
  unsigned char type;
  char name[1];
};

void closeListed(const char* entries, long size, const int* kept, std::size_t count, int listing) {
  for (long at = 0; at < size;) {
    unsigned short length;
    memcpy(&length, entries + at + offsetof(DirectoryEntry, length), sizeof length);
    const int fd = parseDescriptor(entries + at + offsetof(DirectoryEntry, name));
    if (fd >= 0 && fd != listing && !isKept(kept, count, fd)) close(fd);
    at += length;
  }
}
#endif

}  // namespace

bool closeByRange([[maybe_unused]] const int* kept, [[maybe_unused]] std::size_t count) {
#if defined(SYS_close_range)
  // Closes the open-ended range first, so that an unsupported call fails before anything is closed.
  if (!closeRange(count == 0 ? 0 : kept[count - 1] + 1u, ~0u)) return false;
  unsigned int first = 0;
  for (std::size_t i = 0; i < count; ++i) {
    if (kept[i] > 0) closeRange(first, kept[i] - 1u);
    first = kept[i] + 1u;
  }
  return true;
#else
  return false;
#endif
}

bool closeByListing([[maybe_unused]] const int* kept, [[maybe_unused]] std::size_t count) {
#if defined(SYS_getdents64)
  const int listing = open("/proc/self/fd", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (listing < 0) return false;
  alignas(8) char entries[4096];
  long size;
  // The listing is sorted by number, so closing descriptors meanwhile skips none.
  while ((size = syscall(SYS_getdents64, listing, entries, sizeof entries)) > 0)
    closeListed(entries, size, kept, count, listing);
  close(listing);
  return size == 0;
#else
  return false;
#endif
}

void closeOneByOne(const int* kept, std::size_t count, int limit) {
  for (int fd = 0; fd < limit; ++fd)
    if (!isKept(kept, count, fd)) close(fd);
}

void closeAllBut(const int* kept, std::size_t count, int limit) {
  if (closeByRange(kept, count) || closeByListing(kept, count)) return;
  closeOneByOne(kept, count, limit);
}

void arrange(const int* entries, int* scratch, int count) {
  // Drops closed entries first, so that nothing is moved to their numbers.
  for (int i = 0; i < count; ++i) scratch[i] = fcntl(entries[i], F_GETFD) < 0 ? -1 : entries[i];
  for (int i = 0; i < count; ++i)
    if (scratch[i] >= 0) scratch[i] = fcntl(entries[i], F_DUPFD, count);
  for (int i = 0; i < count; ++i)
    if (scratch[i] >= 0) close(entries[i]);
  for (int i = 0; i < count; ++i) {
    if (scratch[i] < 0) continue;
    dup2(scratch[i], i);
    close(scratch[i]);
  }
}

}  // namespace descriptors
}  // namespace vesk
