#include "util/next_content.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "util/include/file_util.h"
#include "util/include/pause.h"

namespace vesk {

namespace {

constexpr int kAttempts = 100;
constexpr long kPauseMilliseconds = 10;
constexpr mode_t kMode = 0644;

bool writeAll(int fd, const std::string& content) {
  size_t done = 0;
  while (done < content.size()) {
    const ssize_t written = ::write(fd, content.data() + done, content.size() - done);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    done += written;
  }
  return true;
}

/// Whether the name still stands for the open file: another writer may have renamed it meanwhile.
bool isNameOf(const std::string& name, int fd) {
  struct stat named;
  struct stat opened;
  return ::lstat(name.c_str(), &named) == 0 && ::fstat(fd, &opened) == 0 && named.st_dev == opened.st_dev &&
         named.st_ino == opened.st_ino;
}

// A file system without such locks has to do without.
bool isLockedByOther(int fd) {
  return ::flock(fd, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

}  // namespace

NextContent::~NextContent() {
  if (m_fd) ::unlink(m_name.c_str());
}

bool NextContent::open() {
  for (int attempt = 0; attempt < kAttempts; attempt++) {
    UniqueFd fd(::open(m_name.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, kMode));
    if (!fd) return false;
    if (isLockedByOther(fd.get())) {
      pause::forMilliseconds(kPauseMilliseconds);
    } else if (isNameOf(m_name, fd.get())) {
      m_fd = std::move(fd);
      return true;
    }
  }
  errno = EWOULDBLOCK;
  return false;
}

bool NextContent::commit(const std::string& content) {
  // A content left behind by a killed writer may be longer.
  if (::ftruncate(m_fd.get(), 0) != 0 || !writeAll(m_fd.get(), content) || ::fsync(m_fd.get()) != 0 ||
      ::fchmod(m_fd.get(), kMode) != 0 || ::renameFile(m_name, m_path) != 0)
    return false;
  m_fd.close();
  return true;
}

}  // namespace vesk
