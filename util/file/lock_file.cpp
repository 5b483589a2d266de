// The file locks of <fokrazo/osport.h>.
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>

#include <fokrazo/osport.h>
#include "util/file/open_file.h"

namespace {

// The lock may be released before its holder is looked up; then try again.
constexpr int kLockAttempts = 10;

struct flock wholeFile(short type) {
  struct flock lock {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  return lock;
}

int changeLock(int fd, short type) {
  for (int attempt = 0; attempt < kLockAttempts; ++attempt) {
    struct flock lock = wholeFile(type);
    if (fcntl(fd, F_SETLK, &lock) == 0) return 0;
    if (errno != EACCES && errno != EAGAIN) return -1;
    lock = wholeFile(type);
    if (fcntl(fd, F_GETLK, &lock) != 0) return -1;
    // An invisible holder, such as one in another PID namespace, has no id here, or one below 1.
    if (lock.l_type != F_UNLCK) return lock.l_pid > 0 ? lock.l_pid : -1;
  }
  return -1;
}

// Empty if there is no regular file at `path` and none can be created.
vesk::UniqueFd openLockFile(const char* path) {
  using vesk::Open;
  if (!path) return vesk::UniqueFd();
  struct stat found;
  if (lstat(path, &found) == 0) {
    if (S_ISREG(found.st_mode))
      return vesk::openFile(path, Open::ReadWrite | Open::Unfollowed | Open::Regular);
    if (remove(path) != 0) return vesk::UniqueFd();
  }
  return vesk::openFile(path, Open::ReadWrite | Open::CreateNew, vesk::DEFAULT_FILEMODE);
}

}  // namespace

int QtrLock(int fd) {
  return changeLock(fd, F_WRLCK);
}

int QtrUnlock(int fd) {
  return changeLock(fd, F_UNLCK);
}

int QtrLock(const char* path, int* status, unsigned mode) {
  *status = -1;
  vesk::UniqueFd fd = openLockFile(path);
  if (!fd) return -1;
  if (mode != 0) (void)fchmod(fd.get(), mode);
  *status = QtrLock(fd.get());
  return fd.release();
}

int QtrLock(const char* path, int* status) {
  return QtrLock(path, status, 0);
}
