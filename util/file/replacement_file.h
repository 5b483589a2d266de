/// Replacing a file as a whole. Internal.
#pragma once

#include <sys/types.h>

#include <string>

#include "util/file/unique_fd.h"

namespace vesk {

/// The next content of a file, in a temporary file beside it that takes the file's place by rename. A reader
/// sees the old content or the new one, whole, even if the writer is killed or the machine crashes. Anything
/// with the file's name is replaced: a symbolic link is not followed.
///
/// A live object holds the lock of its temporary file, so that other processes can tell it from one that a
/// killed writer left. An operation that fails returns false with the reason in errno, and leaves the file as
/// it was.
class ReplacementFile {
 public:
  explicit ReplacementFile(std::string path);
  /// Removes the temporary file unless it took the file's place.
  ~ReplacementFile();
  ReplacementFile(const ReplacementFile&) = delete;
  ReplacementFile& operator=(const ReplacementFile&) = delete;

  /// Makes a temporary file with a name of its own, closed to other users. isTemporary recognises the name.
  bool openUnique();
  /// Opens the temporary file that all writers of the path share (path + ".new"). Waits a second for another
  /// writer (EWOULDBLOCK).
  bool openShared();

  /// The name of the temporary file, or the intended name if it could not be opened.
  const std::string& name() const { return m_name; }
  int fd() const { return m_fd.get(); }

  /// Makes this the whole content of the temporary file, and sets its mode.
  bool write(const std::string& content, mode_t mode);
  /// Flushes what was written to the disk.
  bool sync();
  /// Takes the file's place.
  bool replace();
  /// As replace, and gives the file the security label that its path demands; see renameFile.
  bool replaceAndLabel();

  /// Whether a path names a temporary file of openUnique. Only its last component counts.
  static bool isTemporary(const std::string& path);
  /// Removes such a temporary file unless its writer is alive, or may be. Failures are ignored.
  static void removeLeftover(const std::string& path);

 private:
  bool finish(bool renamed);

  const std::string m_path;
  std::string m_name;
  UniqueFd m_fd;
};

}  // namespace vesk
