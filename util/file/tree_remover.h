/// Emptying a directory. Internal.
#pragma once

#include <string>
#include <vector>

#include "util/file/file_io.h"
#include "util/file/path_location.h"
#include "util/file/unique_fd.h"

namespace vesk {

/// Empties a directory to any depth. Uses descriptors and never follows a link, so nothing outside is
/// touched, whatever other processes do to the tree meanwhile. Lists each directory once, has two descriptors
/// open at a time, and does not recurse.
class TreeRemover {
 public:
  /// `location` is that of the path `root`, and must outlive the object.
  TreeRemover(std::string root, const PathLocation& location);

  /// Removes everything below the root, but not the root itself.
  /// @throws IOException, SystemException as Path::remove
  void removeContents();

 private:
  struct Level {
    std::string name;
    FileId parent;
    std::vector<std::string> pending;  // entries not yet removed
  };

  void removeEntry(const std::string& name);
  void enter(const std::string& name);
  void leave();
  void removeDirectory(const std::string& name);
  /// The path of an entry of m_directory, for messages.
  std::string pathOf(const std::string& name) const;

  const std::string m_root;
  const PathLocation& m_location;
  UniqueFd m_directory;
  std::vector<Level> m_levels;  // the directories from the root's first child down to m_directory
};

}  // namespace vesk
