#include "util/file/next_content.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include <fokrazo/file_util.h>
#include "util/file/file_io.h"
#include "util/thread/pause.h"

namespace vesk {

namespace {

constexpr int kAttempts = 100;
constexpr long kPauseMilliseconds = 10;
constexpr mode_t kMode = 0644;

}  // namespace

NextContent::~NextContent() {
  if (m_fd) ::unlink(m_name.c_str());
}

bool NextContent::open() {
  for (int attempt = 0; attempt < kAttempts; attempt++) {
    UniqueFd fd(::open(m_name.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, kMode));
    if (!fd) return false;
    if (!tryLock(fd.get())) {
      pause::forMilliseconds(kPauseMilliseconds);
    } else if (isNameOf(m_name, fd.get())) {  // another writer may have renamed it meanwhile
      m_fd = std::move(fd);
      return true;
    }
  }
  errno = EWOULDBLOCK;
  return false;
}

bool NextContent::commit(const std::string& content) {
  // A content left behind by a killed writer may be longer.
  if (::ftruncate(m_fd.get(), 0) != 0 || !writeAll(m_fd.get(), content.data(), content.size()) ||
      ::fsync(m_fd.get()) != 0 || ::fchmod(m_fd.get(), kMode) != 0 || ::renameFile(m_name, m_path) != 0)
    return false;
  m_fd.close();
  return true;
}

}  // namespace vesk
