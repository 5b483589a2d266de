#include <fokrazo/secure_open.h>

#include <sys/stat.h>

#include <cerrno>

#include "util/file/file_io.h"
#include "util/file/open_file.h"

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

// The first broken rule is reported.
int checkFile(const struct stat& info) {
  if (S_ISLNK(info.st_mode)) return SECURE_OPEN_SYMLINK;
  if (info.st_nlink > 1) return SECURE_OPEN_HARDLINKED;
  if (info.st_uid != 0) return SECURE_OPEN_FOREIGN_OWNER;
  if (info.st_mode & S_IWOTH) return SECURE_OPEN_WORLD_WRITABLE;
  return S_ISREG(info.st_mode) ? SECURE_OPEN_OK : SECURE_OPEN_FAILED;
}

}  // namespace

vesk::UniqueFd vesk::openSecureFile(const char* path, int* status) {
  struct stat checked;
  *status = ::lstat(path, &checked) != 0 ? statusOfError(errno) : checkFile(checked);
  if (*status != SECURE_OPEN_OK) return UniqueFd();
  UniqueFd fd = openFile(path, Open::Unfollowed | Open::Regular);
  struct stat opened;
  if (!fd)
    *status = statusOfError(errno);
  else if (::fstat(fd.get(), &opened) != 0 || FileId(opened) != FileId(checked))
    *status = SECURE_OPEN_FAILED;
  return *status == SECURE_OPEN_OK ? std::move(fd) : UniqueFd();
}

FILE* SecureOpenForReading(const char* path, int* status) {
  vesk::UniqueFd fd = vesk::openSecureFile(path, status);
  FILE* const stream = fd ? ::fdopen(fd.get(), "r") : nullptr;
  if (stream)
    fd.release();
  else if (fd)
    *status = SECURE_OPEN_FAILED;
  return stream;
}

FILE* OpenForReading(const char* path, int* status, int secure) {
  if (secure) return SecureOpenForReading(path, status);
  // Any file type is accepted; a FIFO without a writer blocks.
  FILE* const stream = ::fopen(path, "re");
  *status = stream ? SECURE_OPEN_OK : statusOfError(errno);
  return stream;
}
