#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include <fokrazo/file_util.h>
#include <fokrazo/fixed_paths.h>
#include <fokrazo/path.h>
#include "util/file/open_file.h"

using vesk::Open;
using vesk::openFile;
using vesk::openFileAt;
using vesk::Path;
using vesk::UniqueFd;

namespace {

constexpr char kUserTempDir[] = "/tmp";
constexpr mode_t kMode = 0755;
constexpr mode_t kModeBits = 07777;

int copyTo(char* dst, size_t size, const char* path) {
  if (strlen(path) < size) {
    strcpy(dst, path);
    return 0;
  }
  errno = ERANGE;
  return -1;
}

// Creates the directory, and removes anything else of that name. Does not follow links. Another process may
// create the directory at the same time. Returns false with errno.
bool replaceByDirectory(const UniqueFd& parent, const char* name) {
  struct stat info;
  const bool there = ::fstatat(parent.get(), name, &info, AT_SYMLINK_NOFOLLOW) == 0;
  if (there && S_ISDIR(info.st_mode)) return true;
  if (there && ::unlinkat(parent.get(), name, 0) != 0 && errno != ENOENT) return false;
  return ::mkdirat(parent.get(), name, kMode) == 0 || errno == EEXIST;
}

// Uses descriptors, so that another process cannot replace the directory in between. Sets the mode
// afterwards, because the umask is shared by all threads. Returns an empty descriptor with errno.
UniqueFd openSafeDirectory(const UniqueFd& parent, const char* name) {
  if (!replaceByDirectory(parent, name)) return UniqueFd();
  UniqueFd directory = openFileAt(parent.get(), name, Open::Directory | Open::Unfollowed);
  struct stat info;
  if (!directory || ::fstat(directory.get(), &info) != 0) return UniqueFd();
  if ((info.st_mode & kModeBits) != kMode && ::fchmod(directory.get(), kMode) != 0) return UniqueFd();
  if ((info.st_uid != 0 || info.st_gid != 0) && ::fchown(directory.get(), 0, 0) != 0) return UniqueFd();
  return directory;
}

// The first component, "/var", belongs to the system and is not touched. Returns false with errno.
bool makeRootTempDir() {
  const Path prefixes(std::string(vesk::paths::kRootTempDir) + "/");
  UniqueFd directory;
  for (const std::string& name : prefixes) {
    if (&name == &prefixes.front())
      directory = openFile("/" + name, Open::Location | Open::Directory);
    else
      directory = openSafeDirectory(directory, name.c_str());
    if (!directory) return false;
  }
  return true;
}

}  // namespace

int GetZantrelTempDir(unsigned uid, char* dst, size_t size) {
  errno = 0;
  if (!dst) {
    errno = EFAULT;
    return -1;
  }
  if (uid != 0) return copyTo(dst, size, kUserTempDir);
  return makeRootTempDir() ? copyTo(dst, size, vesk::paths::kRootTempDir) : -1;
}

int GetZantrelTempDirForCurrentUser(char* dst, size_t size) {
  return GetZantrelTempDir(::geteuid(), dst, size);
}
