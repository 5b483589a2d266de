#include "util/sink/log_backups.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

#include <fokrazo/log_gzip.h>
#include "util/file/file_io.h"

namespace vesk {
namespace {

constexpr unsigned int kOverwrite = 0;

constexpr char kTakenMarker[] = ".rotated.";

bool exists(const std::string& path) {
  struct stat ignored;
  return ::lstat(path.c_str(), &ignored) == 0;
}

// renameat2: with RENAME_NOREPLACE nothing is overwritten (EEXIST).
bool moveFile(const std::string& from, const std::string& to, unsigned int flags) {
  return ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), flags) == 0;
}

// Whether no process is working on the file and no other user can have created it. An empty file is still
// being created.
bool isLeftover(const std::string& name, int file) {
  struct stat status;
  return ::fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink == 1 &&
         status.st_size > 0 && (status.st_uid == 0 || status.st_uid == ::geteuid()) && tryLock(file) &&
         isNameOf(name, file);
}

}  // namespace

std::string LogBackups::name(int number) const {
  return m_log + "." + std::to_string(number) + (m_compressed ? ".gz" : "");
}

void LogBackups::takeLog(UniqueFd wanted) {
  std::vector<Taken> older = leftovers();
  Taken log = claim(std::move(wanted));
  if (log.name.empty()) return;
  for (Taken& taken : older)
    if (makePlace(taken)) m_placed.push_back(std::move(taken));
  if (makePlace(log))
    m_placed.push_back(std::move(log));
  else
    giveBack(log);
}

std::vector<LogBackups::Taken> LogBackups::leftovers() const {
  constexpr size_t kMaxNames = 8;  // the rest waits
  const size_t nameStart = m_log.rfind('/') + 1;
  const std::string start = m_log.substr(nameStart) + kTakenMarker;
  std::vector<Taken> found;
  const std::unique_ptr<DIR, int (*)(DIR*)> directory(
      ::opendir(nameStart == 0 ? "." : m_log.substr(0, nameStart).c_str()), ::closedir);
  if (!directory) return found;
  while (const dirent* entry = found.size() < kMaxNames ? ::readdir(directory.get()) : nullptr) {
    if (strncmp(entry->d_name, start.c_str(), start.size()) != 0) continue;
    Taken taken{m_log.substr(0, nameStart) + entry->d_name, {}, {}};
    taken.lock = openFile(taken.name, Open::Unfollowed);
    if (taken.lock && isLeftover(taken.name, taken.lock.get())) found.push_back(std::move(taken));
  }
  return found;
}

// If several processes try to take a log, one of them gets it. Another may get the next log instead, and
// returns it.
LogBackups::Taken LogBackups::claim(UniqueFd wanted) const {
  Taken log{m_log + kTakenMarker + "XXXXXX", std::move(wanted), {}};
  if (!openTemporaryFile(log.name.data())) return {};
  if (!moveFile(m_log, log.name, kOverwrite)) {
    ::remove(log.name.c_str());
    return {};
  }
  if (!leadsTo(log.name, log.lock.get())) giveBack(log);
  return log;
}

// If there is already a new log, the one taken becomes a backup after all.
void LogBackups::giveBack(Taken& log) const {
  if (moveFile(log.name, m_log, RENAME_NOREPLACE)) log.name.clear();
}

// If the freed name is taken again, another process is rotating too. If that persists, a backup cannot be
// moved, and then the moves may overwrite.
bool LogBackups::makePlace(Taken& taken) const {
  constexpr int kAttempts = 16;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    moveUp(RENAME_NOREPLACE);
    if (occupyFirst(taken, RENAME_NOREPLACE)) return true;
    if (errno == EINVAL) break;  // a file system without such moves
    if (errno != EEXIST) return false;
  }
  moveUp(kOverwrite);
  return occupyFirst(taken, kOverwrite);
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

bool LogBackups::occupyFirst(Taken& taken, unsigned int flags) const {
  const std::string first = name(1);
  if (!m_compressed) return moveFile(taken.name, first, flags);
  if (flags == kOverwrite) ::remove(first.c_str());
  taken.place = openFile(first, Open::Write | Open::CreateNew, 0666);
  return static_cast<bool>(taken.place);
}

// If there is no space, removes the copy; the next rotation tries again.
void LogBackups::compress() {
  if (!m_compressed) return;
  for (const Taken& taken : m_placed) {
    const int place = taken.place.get();
    if (moveCompressed(taken.name.c_str(), ::fcntl(place, F_DUPFD_CLOEXEC, 0))) continue;
    if (isNameOf(name(1), place)) ::remove(name(1).c_str());
  }
}

}  // namespace vesk
