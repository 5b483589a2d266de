/// Reading, writing, comparing and locking open files. Internal. What fails leaves its reason in errno.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <string>
#include <vector>

#include "util/file/open_file.h"
#include "util/file/unique_fd.h"

namespace vesk {

/// The permission bits of a file's mode.
constexpr mode_t kPermissionBits = 0777;

/// How long a process waits for another process's lock on a file: one second, in this many attempts.
constexpr int kLockAttempts = 100;
constexpr long kLockPauseMilliseconds = 10;

/// Reads until there is at least a byte. Returns the number of bytes, 0 at the end, -1 on failure.
ssize_t readSome(int fd, char* buffer, size_t size);
/// Appends the rest of the file. False if reading fails, or if `content` grows beyond `limit` (EFBIG).
bool readAll(int fd, std::string& content, size_t limit = std::string::npos);
/// Opens a file with Open::Regular and these options, and appends all of it, as readAll.
bool readWholeFile(const std::string& path, unsigned options, std::string& content, size_t limit);
/// False if not all could be written.
bool writeAll(int fd, const std::string& content);

/// Appends the names of a directory's entries without "." and "..", in the system's order. False on failure.
bool listDirectory(const UniqueFd& directory, std::vector<std::string>& names);

/// Identifies a file, whatever its names. A default-constructed one identifies none.
struct FileId {
  FileId() = default;
  explicit FileId(const struct stat& info) : device(info.st_dev), inode(info.st_ino) {}
  bool operator==(const FileId& other) const { return device == other.device && inode == other.inode; }
  bool operator!=(const FileId& other) const { return !(*this == other); }

  dev_t device = 0;
  ino_t inode = 0;
};

/// Whether both descriptors are of one file.
bool isSameFile(int fd, int other);
/// Whether the name still belongs to the open file. False if it is a symbolic link, now names another file,
/// or is gone.
bool isNameOf(const std::string& name, int fd);
/// Whether the path leads to the open file. Symbolic links are followed.
bool leadsTo(const std::string& path, int fd);

/// Locks an open file until its descriptor is closed or the process ends. False if another process holds it;
/// never waits. True, without a lock, where the file system has none.
bool tryLock(int fd);

/// Throws SystemException "OS call failed: " and the system's text, with `error` as its code.
[[noreturn]] void throwCallFailed(int error);

}  // namespace vesk
