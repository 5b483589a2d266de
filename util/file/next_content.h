/// A file beside another that carries its next content, and the locks that keep two writers apart. Internal.
#pragma once

#include <string>

#include "util/file/unique_fd.h"

namespace vesk {

/// The next content of a file, under its own name until commit() puts it in the file's place by rename. As
/// two processes may take the same stale lock file for theirs at once, the temporary file has a lock of its
/// own, which ends with the process: what two writers write never mixes.
class NextContent {
 public:
  explicit NextContent(const std::string& path) : m_path(path), m_name(path + ".new") {}
  /// Removes the temporary file, unless it was committed or not opened here.
  ~NextContent();
  NextContent(const NextContent&) = delete;
  NextContent& operator=(const NextContent&) = delete;

  /// Opens and locks the temporary file, waiting a second for another writer. False with errno.
  bool open();
  /// Writes, brings it to the disk, and renames. False with errno, and the file is as it was.
  bool commit(const std::string& content);
  const std::string& name() const { return m_name; }

 private:
  const std::string m_path;
  const std::string m_name;
  UniqueFd m_fd;
};

}  // namespace vesk
