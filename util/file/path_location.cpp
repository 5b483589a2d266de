#include "util/file/path_location.h"

#include <fcntl.h>

#include <algorithm>
#include <climits>
#include <utility>

#include "util/error/throw.h"
#include "util/file/open_file.h"

namespace vesk {
namespace {

constexpr char kSource[] = "util/path";

}  // namespace

PathLocation::PathLocation(std::string path) {
  if (path.find('\0') != std::string::npos)
    m_error = EINVAL;
  else if (path.size() >= PATH_MAX)
    openParent(path);
  else
    m_name = std::move(path);
}

int PathLocation::directory() const {
  return m_directory ? m_directory.get() : AT_FDCWD;
}

void PathLocation::openParent(const std::string& path) {
  constexpr unsigned kOptions = Open::Location | Open::Directory;
  m_directory = openFile(path[0] == '/' ? "/" : ".", kOptions);
  for (size_t begin = 0, end; m_directory && begin < path.size(); begin = end + 1) {
    end = std::min(path.find('/', begin), path.size());
    if (end == begin) continue;
    if (!m_name.empty()) m_directory = openFileAt(m_directory.get(), m_name.c_str(), kOptions);
    m_name = path.substr(begin, end - begin);
  }
  if (!m_directory) m_error = errno;
}

void throwPathFailure(int error, const char* literal, const std::string& path) {
  FOKRAZO_THROW_ERRNO(IOException, "IOException", error, error, literal, path.c_str());
}

}  // namespace vesk
