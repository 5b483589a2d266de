/// Reading, writing, comparing and locking open files. Internal. Failures set errno.
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

/// Attempts to get a file lock that another process holds, within one second.
constexpr int kLockAttempts = 100;
constexpr long kLockPauseMilliseconds = 10;

/// How much is read or copied at a time, in bytes.
constexpr size_t kBlockSize = 16 * 1024;

/// read(), repeated on EINTR. Returns the number of bytes, 0 at the end, -1 on failure.
ssize_t readSome(int fd, char* buffer, size_t size);
/// Appends the rest of the file. Returns false if reading fails or `content` would exceed `limit` (EFBIG).
bool readAll(int fd, std::string& content, size_t limit = std::string::npos);
/// Opens a file with Open::Regular and `options`, and appends its content as readAll does.
bool readWholeFile(const std::string& path, unsigned options, std::string& content, size_t limit);
/// write(), repeated on EINTR. Returns the number of bytes, -1 on failure.
ssize_t writeSome(int fd, const char* data, size_t size);
/// False if not all could be written.
bool writeAll(int fd, const std::string& content);

/// Appends the names of a directory's entries without "." and "..", in the system's order. False on failure.
bool listDirectory(const UniqueFd& directory, std::vector<std::string>& names);

/// Identifies a file, regardless of its names. Default-constructed: no file.
struct FileId {
  FileId() = default;
  explicit FileId(const struct stat& info) : device(info.st_dev), inode(info.st_ino) {}
  bool operator==(const FileId& other) const { return device == other.device && inode == other.inode; }
  bool operator!=(const FileId& other) const { return !(*this == other); }

  dev_t device = 0;
  ino_t inode = 0;
};

/// Whether both descriptors refer to the same file.
bool isSameFile(int fd, int other);
/// Whether the name still refers to the open file. False if it is a symbolic link, refers to another file, or
/// does not exist.
bool isNameOf(const std::string& name, int fd);
/// Whether the path, with symbolic links followed, refers to the open file.
bool leadsTo(const std::string& path, int fd);

/// Locks an open file until its descriptor is closed or the process ends. Never waits: returns false if
/// another process holds the lock. Returns true, without a lock, if the file system has no locks.
bool tryLock(int fd);

/// Throws SystemException "OS call failed: " and the system's text, with `error` as its code.
[[noreturn]] void throwCallFailed(int error);

}  // namespace vesk
