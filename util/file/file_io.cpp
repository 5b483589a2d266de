#include "util/file/file_io.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>

#include "util/error/throw.h"

namespace vesk {
namespace {

constexpr char kSource[] = "util/file_util";

bool isFileOf(const struct stat& named, int fd) {
  struct stat opened;
  return ::fstat(fd, &opened) == 0 && FileId(named) == FileId(opened);
}

// One read gets a small file and its end. A larger size is not trusted.
size_t firstBlock(int fd) {
  struct stat info;
  const bool isKnown = ::fstat(fd, &info) == 0 && S_ISREG(info.st_mode);
  return isKnown && info.st_size < static_cast<off_t>(kBlockSize) ? info.st_size + 1 : kBlockSize;
}

}  // namespace

ssize_t readSome(int fd, char* buffer, size_t size) {
  ssize_t got;
  do {
    got = ::read(fd, buffer, size);
  } while (got < 0 && errno == EINTR);
  return got;
}

bool readAll(int fd, std::string& content, size_t limit) {
  // Reads directly into the string: the stack may be small.
  for (size_t block = firstBlock(fd);; block = kBlockSize) {
    const size_t size = content.size();
    content.resize(size + block);
    const ssize_t got = readSome(fd, &content[size], block);
    content.resize(size + (got > 0 ? got : 0));
    if (got <= 0) return got == 0;
    if (content.size() <= limit) continue;
    errno = EFBIG;
    return false;
  }
}

bool readWholeFile(const std::string& path, unsigned options, std::string& content, size_t limit) {
  const UniqueFd fd = openFile(path, options | Open::Regular);
  return fd && readAll(fd.get(), content, limit);
}

ssize_t writeSome(int fd, const char* data, size_t size) {
  ssize_t written;
  do {
    written = ::write(fd, data, size);
  } while (written < 0 && errno == EINTR);
  return written;
}

bool writeAll(int fd, const std::string& content) {
  for (size_t done = 0; done < content.size();) {
    const ssize_t written = writeSome(fd, content.data() + done, content.size() - done);
    if (written <= 0) return false;
    done += written;
  }
  return true;
}

bool listDirectory(const UniqueFd& directory, std::vector<std::string>& names) {
  UniqueFd copy(::fcntl(directory.get(), F_DUPFD_CLOEXEC, 0));
  const std::unique_ptr<DIR, int (*)(DIR*)> handle(copy ? ::fdopendir(copy.get()) : nullptr, ::closedir);
  if (!handle) return false;
  copy.release();
  while (const dirent* entry = (errno = 0, ::readdir(handle.get())))
    if (strcmp(entry->d_name, ".") != 0 && strcmp(entry->d_name, "..") != 0) names.push_back(entry->d_name);
  return errno == 0;
}

bool isSameFile(int fd, int other) {
  struct stat info;
  return ::fstat(fd, &info) == 0 && isFileOf(info, other);
}

bool isNameOf(const std::string& name, int fd) {
  struct stat named;
  return ::lstat(name.c_str(), &named) == 0 && isFileOf(named, fd);
}

bool leadsTo(const std::string& path, int fd) {
  struct stat named;
  return ::stat(path.c_str(), &named) == 0 && isFileOf(named, fd);
}

bool tryLock(int fd) {
  return ::flock(fd, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

void throwCallFailed(int error) {
  FOKRAZO_THROW_CALL_FAILED(error, error);
}

}  // namespace vesk
