/// Operations on all key set files of a directory: copy, remove, and take a snapshot so that a failed join
/// can be rolled back.
#pragma once

#include <map>
#include <string>

#include <boost/shared_ptr.hpp>

#include <fokrazo/export.h>

namespace vesk {

/// A file of a snapshot.
struct FOKRAZO_API KSetData {
  /// The whole file.
  std::string content;
  int mode = 0;  ///< permission bits
};

/// Operations on directories of key set files, with at most one snapshot. An empty directory argument means
/// the default one. Only regular files are read. A link or a FIFO with the name of a key set is never
/// followed; a write replaces it. Files are replaced as a whole, by rename. Other processes may save settings
/// at the same time; their unfinished files are left alone. A file of more than 1 MiB is refused
/// (SystemException, EFBIG). In the data directory's "user/", where every user may write, root reads only its
/// own files. Thread-safety: one thread at a time.
/// @throws NotFoundException the directory cannot be listed
/// @throws IOException, SystemException a file cannot be read, written or removed
class FOKRAZO_API KSets {
 public:
  /// The default directory is the data directory.
  KSets();
  explicit KSets(const std::string& defaultDir);

  /// Whether the file name is that of a key set: it begins with "kset.".
  static bool isKSetFile(const char* fileName);
  /// Whether the file holds data of one domain controller: its name begins with "kset.dc.".
  static bool isKSetDCFile(const char* fileName);

  /// Copies one file with its mode, if it exists.
  void copy(const std::string& toDir, const std::string& fromDir, const std::string& fileName) const;
  /// Copies all key set files.
  void copy(const std::string& toDir, const std::string& fromDir) const;
  /// Copies the key set files of domain controllers.
  void copyDCs(const std::string& toDir, const std::string& fromDir) const;

  /// Removes all key set files, and clears the settings in memory.
  void clean(const std::string& dir) const;
  /// Adds all key set files to the snapshot; a file of the same name is replaced.
  void snapShot(const std::string& dir);
  /// Restores the files of the snapshot, removes all other key set files, and empties the snapshot.
  void rollBack(const std::string& dir);

 private:
  using Snapshot = std::map<std::string, boost::shared_ptr<KSetData>>;

  /// `dir` or the default, with a trailing "/".
  std::string directory(const std::string& dir) const;

  std::string m_defaultDir;
  Snapshot m_snapshot;
};

}  // namespace vesk
