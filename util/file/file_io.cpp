#include "util/file/file_io.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

#include "util/error/throw.h"

namespace vesk {
namespace {

constexpr char kSource[] = "util/file_util";

bool isFileOf(const struct stat& named, int fd) {
  struct stat opened;
  return ::fstat(fd, &opened) == 0 && FileId(named) == FileId(opened);
}

}  // namespace

UniqueFd openUnfollowed(const std::string& path) {
  return UniqueFd(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
}

bool isNeverRegular(int error) {
  return error == ELOOP || error == ENXIO || error == ENODEV;
}

ssize_t readSome(int fd, char* buffer, size_t size) {
  ssize_t got;
  do {
    got = ::read(fd, buffer, size);
  } while (got < 0 && errno == EINTR);
  return got;
}

bool readAll(int fd, std::string& content, size_t limit) {
  char block[16 * 1024];
  ssize_t got;
  while ((got = readSome(fd, block, sizeof block)) > 0) {
    content.append(block, got);
    if (content.size() <= limit) continue;
    errno = EFBIG;
    return false;
  }
  return got == 0;
}

bool writeAll(int fd, const char* data, size_t size) {
  while (size > 0) {
    const ssize_t written = ::write(fd, data, size);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    data += written;
    size -= written;
  }
  return true;
}

bool isNameOf(const std::string& name, int fd) {
  struct stat named;
  return ::lstat(name.c_str(), &named) == 0 && isFileOf(named, fd);
}

bool leadsTo(const std::string& path, int fd) {
  struct stat named;
  return ::stat(path.c_str(), &named) == 0 && isFileOf(named, fd);
}

void throwCallFailed(int error) {
  FOKRAZO_THROW_ERRNO(SystemException, "vesk::SystemException", error, error, "OS call failed");
}

void throwFileFailure(int error, const char* literal, const std::string& path) {
  constexpr char kSource[] = "util/setting";
  FOKRAZO_THROW_ERRNO(IOException, "IOException", error, error, literal, path.c_str());
}

bool tryLock(int fd) {
  return ::flock(fd, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

}  // namespace vesk
