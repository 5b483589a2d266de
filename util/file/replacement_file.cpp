#include "util/file/replacement_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "util/file/file_io.h"

namespace vesk {
namespace {

constexpr char kCannotOpen[] = "Cannot open file %s";

}  // namespace

// Until the new file is locked, another process may take it for a killed writer's: then it is given up.
ReplacementFile::ReplacementFile(const std::string& path) : m_path(path) {
  constexpr int kAttempts = 100;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    m_name = path + paths::kKSetTemporary + ".XXXXXX";
    m_fd = UniqueFd(::mkostemp(m_name.data(), O_CLOEXEC));
    if (!m_fd) throwFileFailure(errno, kCannotOpen, m_name);
    if (tryLock(m_fd.get()) && isNameOf(m_name, m_fd.get())) return;
    ::unlink(m_name.c_str());
  }
  throwFileFailure(EWOULDBLOCK, kCannotOpen, m_name);
}

ReplacementFile::~ReplacementFile() {
  if (!m_committed) ::unlink(m_name.c_str());
}

void ReplacementFile::commit() {
  if (::fsync(m_fd.get()) != 0) throwFileFailure(errno, "Cannot write file %s", m_name);
  if (::rename(m_name.c_str(), m_path.c_str()) != 0)
    throwFileFailure(errno, "Cannot rename file to %s", m_path);
  m_committed = true;
  m_fd.close();
}

// What cannot be opened for want of rights or descriptors may be a live writer's. unlink leaves directories
// alone, and the files of others may stay.
void ReplacementFile::removeLeftover(const std::string& path) {
  const UniqueFd fd = openUnfollowed(path);
  if (fd ? tryLock(fd.get()) : isNeverRegular(errno)) ::unlink(path.c_str());
}

}  // namespace vesk
