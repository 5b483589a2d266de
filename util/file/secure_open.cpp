#include <fokrazo/secure_open.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "util/file/file_io.h"
#include "util/file/unique_fd.h"

namespace {

int statusOfError(int error) {
  switch (error) {
    case ENOENT:
      return SECURE_OPEN_MISSING;
    case EACCES:
      return SECURE_OPEN_DENIED;
    default:
      return SECURE_OPEN_FAILED;
  }
}

// The order is that in which an administrator is told of the faults.
int checkFile(const struct stat& info) {
  if (S_ISLNK(info.st_mode)) return SECURE_OPEN_SYMLINK;
  if (info.st_nlink > 1) return SECURE_OPEN_HARDLINKED;
  if (info.st_uid != 0) return SECURE_OPEN_FOREIGN_OWNER;
  if (info.st_mode & S_IWOTH) return SECURE_OPEN_WORLD_WRITABLE;
  return S_ISREG(info.st_mode) ? SECURE_OPEN_OK : SECURE_OPEN_FAILED;
}

FILE* openStream(const char* path, const struct stat& expected, int* status) {
  vesk::UniqueFd fd(::open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  if (!fd) {
    *status = statusOfError(errno);
    return nullptr;
  }
  struct stat opened;
  *status = SECURE_OPEN_FAILED;
  if (::fstat(fd.get(), &opened) != 0) return nullptr;
  if (vesk::FileId(opened) != vesk::FileId(expected)) return nullptr;
  FILE* stream = ::fdopen(fd.get(), "r");
  if (!stream) return nullptr;
  fd.release();
  *status = SECURE_OPEN_OK;
  return stream;
}

}  // namespace

FILE* SecureOpenForReading(const char* path, int* status) {
  struct stat info;
  *status = ::lstat(path, &info) != 0 ? statusOfError(errno) : checkFile(info);
  return *status == SECURE_OPEN_OK ? openStream(path, info, status) : nullptr;
}

FILE* OpenForReading(const char* path, int* status, int secure) {
  if (secure) return SecureOpenForReading(path, status);
  FILE* stream = ::fopen(path, "re");
  *status = stream ? SECURE_OPEN_OK : statusOfError(errno);
  return stream;
}
