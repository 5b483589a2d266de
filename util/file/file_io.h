/// Steps of file work that several rooms take. Internal. What fails leaves its reason in errno.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <string>

#include "util/file/unique_fd.h"

namespace vesk {

/// Opens for reading what somebody else may have put there: a link is not followed (ELOOP), and a pipe
/// without a writer is not waited for. Whether it is a regular file is the caller's to ask.
UniqueFd openUnfollowed(const std::string& path);
/// Whether openUnfollowed failed with an error that no regular file gives: a link, a socket, a device without
/// a driver.
bool isNeverRegular(int error);

/// Reads on until there is a byte. -1, or 0 at the end.
ssize_t readSome(int fd, char* buffer, size_t size);
/// Appends all that is still to be read. False if reading fails, or the content grows beyond `limit` (EFBIG).
bool readAll(int fd, std::string& content, size_t limit = std::string::npos);
/// False if not all could be written.
bool writeAll(int fd, const char* data, size_t size);

/// Which file it is, whatever names it has. None at first.
struct FileId {
  FileId() = default;
  explicit FileId(const struct stat& info) : device(info.st_dev), inode(info.st_ino) {}
  bool operator==(const FileId& other) const { return device == other.device && inode == other.inode; }
  bool operator!=(const FileId& other) const { return !(*this == other); }

  dev_t device = 0;
  ino_t inode = 0;
};

/// Whether the name, not followed if it is a link, stands for the open file: it may have been given to
/// another one meanwhile, or to none.
bool isNameOf(const std::string& name, int fd);
/// The same where links are followed.
bool leadsTo(const std::string& path, int fd);

/// Throws SystemException "OS call failed: " and the system's text.
[[noreturn]] void throwCallFailed(int error);
/// Throws IOException with the system's text; the literal takes the path.
[[noreturn]] void throwFileFailure(int error, const char* literal, const std::string& path);

/// Takes the lock of an open file, which ends with the descriptor and with the process. False if somebody
/// else holds it; never waits. A file system without such locks has to do without.
bool tryLock(int fd);

}  // namespace vesk
