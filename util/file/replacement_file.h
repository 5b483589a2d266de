/// Atomic replacement of files. Internal.
#pragma once

#include <sys/types.h>

#include <string>

#include "util/file/unique_fd.h"

namespace vesk {

/// The new content of a file, in a temporary file in the same directory, which then replaces the file by
/// rename. A reader sees either the old content or the new one, even if the writer is killed or the machine
/// crashes. A symbolic link is replaced, not followed.
///
/// The object locks its temporary file, so that other processes can distinguish it from that of a killed
/// writer. A failing operation returns false with errno, and leaves the file unchanged.
class ReplacementFile {
 public:
  explicit ReplacementFile(std::string path);
  /// Removes the temporary file, unless it has replaced the file.
  ~ReplacementFile();
  ReplacementFile(const ReplacementFile&) = delete;
  ReplacementFile& operator=(const ReplacementFile&) = delete;

  /// Creates a temporary file with a unique name that isTemporary recognises, inaccessible to other users.
  bool openUnique();
  /// Opens the temporary file shared by all writers of the path (path + ".new"). Waits up to a second for
  /// another writer; then fails with EWOULDBLOCK.
  bool openShared();

  /// The name of the temporary file, even if it could not be opened.
  const std::string& name() const { return m_name; }
  int fd() const { return m_fd.get(); }

  /// Replaces the content of the temporary file, and sets its mode.
  bool write(const std::string& content, mode_t mode);
  /// Flushes the file to the disk (fsync).
  bool sync();
  /// Renames the temporary file to the file's name.
  bool replace();
  /// As replace, and sets the security label for the path, as renameFile does.
  bool replaceAndLabel();

  /// Whether a path has a name from openUnique. Checks only the last component.
  static bool isTemporary(const std::string& path);
  /// Removes such a temporary file, unless its writer is or may be alive. Ignores failures.
  static void removeLeftover(const std::string& path);

 private:
  bool finish(bool renamed);

  const std::string m_path;
  std::string m_name;
  UniqueFd m_fd;
};

}  // namespace vesk
