/// Operations on all key set files of a directory: copying, removing, and remembering them so that a join
/// that fails can be rolled back.
#pragma once

#include <map>
#include <string>

#include <boost/shared_ptr.hpp>

#include <fokrazo/export.h>

namespace vesk {

/// A file that is remembered.
struct FOKRAZO_API KSetData {
  /// Of the whole file.
  std::string content;
  int mode = 0;  ///< permission bits
};

/// Operations on directories of key set files, and at most one snapshot. In every operation an empty
/// directory means the default one. Only regular files are read. A link or a FIFO under the name of a key set
/// is never followed, and is replaced by what is written there. Files are replaced by rename, whole. Other
/// processes may save settings at the same time: what they have not finished is no key set, and is left
/// alone. A file of more than 1 MiB is refused (SystemException, EFBIG). In the data directory's "user/",
/// where every user may write, root reads only its own files. Thread-safety: one thread at a time.
/// @throws NotFoundException (all that list) the directory cannot be listed
/// @throws IOException, SystemException a file cannot be read, written or removed
class FOKRAZO_API KSets {
 public:
  /// Works on the data directory by default.
  KSets();
  explicit KSets(const std::string& defaultDir);

  /// Whether a file name is that of a key set: it begins with "kset.".
  static bool isKSetFile(const char* fileName);
  /// Whether it holds data of one domain controller: it begins with "kset.dc.".
  static bool isKSetDCFile(const char* fileName);

  /// Copies one file with its mode, if it exists.
  void copy(const std::string& toDir, const std::string& fromDir, const std::string& fileName) const;
  /// Copies all key set files.
  void copy(const std::string& toDir, const std::string& fromDir) const;
  /// Copies the key set files of domain controllers.
  void copyDCs(const std::string& toDir, const std::string& fromDir) const;

  /// Removes all key set files, and forgets the settings in memory.
  void clean(const std::string& dir) const;
  /// Remembers all key set files; a file remembered earlier under the same name is replaced.
  void snapShot(const std::string& dir);
  /// Restores the files of the snapshot, removes all other key set files, and empties the snapshot.
  void rollBack(const std::string& dir);

 private:
  using Snapshot = std::map<std::string, boost::shared_ptr<KSetData>>;

  /// `dir` or the default, with "/" at its end.
  std::string directory(const std::string& dir) const;

  std::string m_defaultDir;
  Snapshot m_snapshot;
};

}  // namespace vesk
