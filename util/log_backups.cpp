#include "util/log_backups.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "util/file_io.h"
#include "util/include/log_gzip.h"

namespace vesk {
namespace {

constexpr unsigned int kOverwrite = 0;

bool exists(const std::string& path) {
  struct stat ignored;
  return ::lstat(path.c_str(), &ignored) == 0;
}

// As the system's call: with RENAME_NOREPLACE nothing is overwritten (EEXIST).
bool moveFile(const std::string& from, const std::string& to, unsigned int flags) {
  return ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), flags) == 0;
}

bool isSameFile(const std::string& path, int file) {
  struct stat named, opened;
  return ::stat(path.c_str(), &named) == 0 && ::fstat(file, &opened) == 0 && FileId(named) == FileId(opened);
}

}  // namespace

std::string LogBackups::name(int number) const {
  return m_log + "." + std::to_string(number) + (m_compressed ? ".gz" : "");
}

void LogBackups::takeLog(int wanted) {
  if (claim(wanted) && !makePlace()) giveBack();
}

// Of several processes that take one log, one gets it. Another one may get the log that has followed, and
// gives it back.
bool LogBackups::claim(int wanted) {
  m_taken = m_log + ".rotated.XXXXXX";
  if (UniqueFd(::mkostemp(m_taken.data(), O_CLOEXEC))) {
    if (moveFile(m_log, m_taken, kOverwrite)) {
      if (isSameFile(m_taken, wanted)) return true;
      giveBack();
      return !m_taken.empty();
    }
    ::remove(m_taken.c_str());
  }
  m_taken.clear();
  return false;
}

// Where there is a new log by now the taken one becomes a backup all the same.
void LogBackups::giveBack() {
  if (moveFile(m_taken, m_log, RENAME_NOREPLACE)) m_taken.clear();
}

// A place that is taken again when it has just been made free is another process's. If that goes on, a backup
// cannot be moved: then others are overwritten.
bool LogBackups::makePlace() {
  constexpr int kAttempts = 16;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    moveUp(RENAME_NOREPLACE);
    if (occupyFirst(RENAME_NOREPLACE)) return true;
    if (errno == EINVAL) break;  // a file system without such moves
    if (errno != EEXIST) return false;
  }
  moveUp(kOverwrite);
  return occupyFirst(kOverwrite);
}

void LogBackups::moveUp(unsigned int flags) const {
  for (int number = m_count; number >= 1; --number) {
    const std::string old = name(number);
    if (!exists(old)) continue;
    if (number == m_count)
      ::remove(old.c_str());
    else
      moveFile(old, name(number + 1), flags);
  }
}

bool LogBackups::occupyFirst(unsigned int flags) {
  const std::string first = name(1);
  if (!m_compressed) return moveFile(m_taken, first, flags);
  if (flags == kOverwrite) ::remove(first.c_str());
  constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  m_first = UniqueFd(::open(first.c_str(), kFlags, 0666));
  return static_cast<bool>(m_first);
}

void LogBackups::compress() {
  if (m_first) moveCompressed(m_taken.c_str(), m_first.release());
}

}  // namespace vesk
