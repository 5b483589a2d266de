#include "util/file/path_location.h"

#include <fcntl.h>

#include <cerrno>
#include <climits>

#include "util/error/throw.h"
#include "util/file/open_file.h"

namespace vesk {
namespace {

constexpr char kSource[] = "util/path";

}  // namespace

PathLocation::PathLocation(const Path& path) : m_name(path.string('/', true)) {
  if (m_name.find('\0') != std::string::npos)
    m_error = EINVAL;
  else if (m_name.size() >= PATH_MAX)
    openParent(path);
}

int PathLocation::directory() const {
  return m_directory ? m_directory.get() : AT_FDCWD;
}

void PathLocation::openParent(const Path& path) {
  constexpr unsigned kOptions = Open::Location | Open::Directory;
  Path::const_iterator last = path.end();
  if (path.leaf().empty()) --last;
  m_directory = openFile(path.isRoot() ? "/" : ".", kOptions);
  for (auto name = path.begin(); m_directory && name != last; ++name)
    m_directory = openFileAt(m_directory.get(), name->c_str(), kOptions);
  if (!m_directory) m_error = errno;
  m_name = path.leaf().empty() ? *last : path.leaf();
}

void throwPathFailure(int error, const char* literal, const Path& path) {
  FOKRAZO_THROW_ERRNO(IOException, "IOException", error, error, literal, path.string('/', true).c_str());
}

}  // namespace vesk
