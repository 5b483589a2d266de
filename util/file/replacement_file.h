/// A file that comes into being whole. Internal.
#pragma once

#include <string>

#include <fokrazo/fixed_paths.h>
#include "util/file/unique_fd.h"

namespace vesk {

/// A temporary file beside a path. commit() puts it in the path's place in one step, whatever stands there: a
/// link is replaced, not followed. An object that goes without that removes the temporary file. What a killed
/// process leaves is known by paths::kKSetTemporary, and is nobody's: a live object holds the lock of its
/// file.
class ReplacementFile {
 public:
  /// Makes the temporary file, readable by its owner alone.
  /// @throws IOException "Cannot open file …"
  explicit ReplacementFile(const std::string& path);
  ~ReplacementFile();
  ReplacementFile(const ReplacementFile&) = delete;
  ReplacementFile& operator=(const ReplacementFile&) = delete;

  /// Name of the temporary file.
  const std::string& name() const { return m_name; }
  int fd() const { return m_fd.get(); }

  /// Brings the content to the disk, so that a crash of the machine leaves no empty file, and renames.
  /// @throws IOException "Cannot write file …", "Cannot rename file to …"
  void commit();

  /// Whether a path is that of a temporary file. The names of the directories above do not count.
  static bool isTemporary(const std::string& path) {
    return path.find(paths::kKSetTemporary, path.rfind('/') + 1) != std::string::npos;
  }
  /// Removes a temporary file unless its writer is or may be alive. No failure counts.
  static void removeLeftover(const std::string& path);

 private:
  std::string m_path;
  std::string m_name;
  UniqueFd m_fd;
  bool m_committed = false;
};

}  // namespace vesk
