#include "util/file/replacement_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include <fokrazo/file_util.h>
#include <fokrazo/fixed_paths.h>
#include "util/file/file_io.h"
#include "util/thread/pause.h"

namespace vesk {
namespace {

constexpr char kSharedSuffix[] = ".new";
constexpr char kUniqueSuffix[] = ".XXXXXX";  // after paths::kKSetTemporary
constexpr mode_t kSharedMode = 0644;

}  // namespace

ReplacementFile::ReplacementFile(std::string path) : m_path(std::move(path)) {}

ReplacementFile::~ReplacementFile() {
  if (m_fd) ::unlink(m_name.c_str());
}

bool ReplacementFile::openUnique() {
  for (int attempt = 0; attempt < kLockAttempts; ++attempt) {
    m_name = m_path + paths::kKSetTemporary + kUniqueSuffix;
    UniqueFd fd = openTemporaryFile(m_name.data());
    if (!fd) return false;
    if (tryLock(fd.get()) && isNameOf(m_name, fd.get())) {
      m_fd = std::move(fd);
      return true;
    }
    // Another process took it for stale before it was locked.
    ::unlink(m_name.c_str());
  }
  errno = EWOULDBLOCK;
  return false;
}

bool ReplacementFile::openShared() {
  m_name = m_path + kSharedSuffix;
  for (int attempt = 0; attempt < kLockAttempts; ++attempt) {
    UniqueFd fd = openFile(m_name, Open::Write | Open::Create | Open::Unfollowed, kSharedMode);
    if (!fd) return false;
    if (!tryLock(fd.get())) {
      pause::forMilliseconds(kLockPauseMilliseconds);
    } else if (isNameOf(m_name, fd.get())) {  // else the previous writer has renamed or removed it
      m_fd = std::move(fd);
      return true;
    }
  }
  errno = EWOULDBLOCK;
  return false;
}

bool ReplacementFile::write(const std::string& content, mode_t mode) {
  // A killed writer may have left more text in the shared file.
  return ::ftruncate(m_fd.get(), 0) == 0 && writeAll(m_fd.get(), content) && ::fchmod(m_fd.get(), mode) == 0;
}

bool ReplacementFile::sync() {
  return ::fsync(m_fd.get()) == 0;
}

bool ReplacementFile::replace() {
  return finish(::rename(m_name.c_str(), m_path.c_str()) == 0);
}

bool ReplacementFile::replaceAndLabel() {
  return finish(::renameFile(m_name, m_path) == 0);
}

bool ReplacementFile::finish(bool renamed) {
  if (renamed) m_fd.close();
  return renamed;
}

bool ReplacementFile::isTemporary(const std::string& path) {
  return path.find(paths::kKSetTemporary, path.rfind('/') + 1) != std::string::npos;
}

void ReplacementFile::removeLeftover(const std::string& path) {
  const UniqueFd fd = openFile(path, Open::Unfollowed);
  // If permissions or descriptors are lacking, its writer may be alive.
  if (fd ? tryLock(fd.get()) : isNeverRegular(errno)) ::unlink(path.c_str());
}

}  // namespace vesk
