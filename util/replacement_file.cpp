#include "util/replacement_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "util/setting_store.h"

namespace vesk {
ReplacementFile::ReplacementFile(const std::string& path)
    : m_path(path), m_name(path + gTempFileMarker + ".XXXXXX"), m_fd(::mkostemp(m_name.data(), O_CLOEXEC)) {
  if (m_fd) return;
  throwFileFailure(errno, "Cannot open file %s", m_name);
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

}  // namespace vesk
