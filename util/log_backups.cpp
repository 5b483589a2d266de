#include "util/log_backups.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>

#include "util/include/log_gzip.h"

namespace vesk {
namespace {

bool exists(const std::string& path) {
  struct stat ignored;
  return ::lstat(path.c_str(), &ignored) == 0;
}

}  // namespace

std::string LogBackups::name(int number) const {
  return m_log + "." + std::to_string(number) + (m_compressed ? ".gz" : "");
}

void LogBackups::moveUp() const {
  for (int number = m_count; number >= 1; --number) {
    const std::string old = name(number);
    if (!exists(old)) continue;
    if (number == m_count)
      ::remove(old.c_str());
    else
      ::rename(old.c_str(), name(number + 1).c_str());
  }
}

void LogBackups::takeLog() {
  if (!m_compressed) {
    moveUp();
    ::rename(m_log.c_str(), name(1).c_str());
    return;
  }
  std::string taken = m_log + ".rotated.XXXXXX";
  if (!UniqueFd(::mkostemp(taken.data(), O_CLOEXEC))) return;
  moveUp();
  constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  m_first = UniqueFd(::open(name(1).c_str(), kFlags, 0666));
  if (::rename(m_log.c_str(), taken.c_str()) == 0) {
    m_taken = taken;
    return;
  }
  ::remove(taken.c_str());
  if (m_first) ::remove(name(1).c_str());
}

void LogBackups::compress() {
  if (!m_taken.empty()) moveCompressed(m_taken.c_str(), m_first.release());
}

}  // namespace vesk
