/// Paths of any length for system calls. Internal.
#pragma once

#include <cerrno>
#include <string>

#include "util/file/unique_fd.h"

namespace vesk {

/// A path as a directory and a name, for "at" calls. The directory is opened only if the path is too long for
/// one call. Links to directories are followed as usual.
class PathLocation {
 public:
  /// Takes a path with "/" between its components. Check error() afterwards.
  explicit PathLocation(std::string path);

  /// An errno, or 0 if the path is usable.
  int error() const { return m_error; }
  int directory() const;
  const char* name() const { return m_name.c_str(); }

 private:
  void openParent(const std::string& path);

  std::string m_name;
  UniqueFd m_directory;
  int m_error = 0;
};

/// The result of `call(directory, name)`, or -1 with errno if the path is unusable.
template <class Call>
int callAt(const std::string& path, Call call) {
  const PathLocation location(path);
  if (location.error() == 0) return call(location.directory(), location.name());
  errno = location.error();
  return -1;
}

/// Throws IOException with the system's text; `literal` is a format for the path.
[[noreturn]] void throwPathFailure(int error, const char* literal, const std::string& path);

}  // namespace vesk
