/// File paths by components, and the work on the file system that goes with them.
#pragma once

#include <dirent.h>

#include <iosfwd>
#include <list>
#include <memory>
#include <string>

#include <fokrazo/export.h>

namespace vesk {

/// A path: its directory components in order (the list itself), a leaf that may be empty, and whether it
/// starts at the root. "/" and "\" both separate, on every platform; doubled separators count once. A path
/// with none of the three is the empty path, and no operation on files takes it.
///
/// Operations on files take paths of any length. They throw, with errno as code and the system's text behind
/// the message; @throws BadDataException "Empty path" where told.
class FOKRAZO_API Path : public std::list<std::string> {
 public:
  /// The root's text, and what a blank becomes in string().
  static constexpr char ROOT[] = "/";
  static constexpr char SPACE_REPLACEMENT[] = "_";

  /// The empty path.
  Path() = default;
  /// As parsePath.
  Path(const char* text);
  Path(const std::string& text);

  /// Sets this path from text.
  void parsePath(const std::string& text);
  /// The text with that separator, without one at the end. Unless `keepSpaces`, each blank becomes "_".
  std::string string(char separator, bool keepSpaces) const;
  /// The text with backslashes.
  std::string winString() const;

  /// What stands behind the last separator, and whether the path begins at the root.
  const std::string& leaf() const { return m_leaf; }
  bool isRoot() const { return m_isRoot; }
  /// Whether this is the empty path. (A list without components may still have a leaf or be the root.)
  bool isEmptyPath() const { return empty() && m_leaf.empty() && !m_isRoot; }

  /// Order of the texts, by bytes.
  bool operator<(const Path& other) const;
  /// Whether all components are the same.
  bool operator==(const Path& other) const;
  bool operator!=(const Path& other) const { return !(*this == other); }
  /// Goes on with `right` below this path. @throws BadDataException `right` starts at the root
  Path& operator/=(const Path& right);
  Path operator/(const Path& right) const;
  /// The path of the entry `name` in this directory; every byte of the name is taken as it is.
  Path entry(const std::string& name) const;

  /// Whether it is there; a dangling link is not, and the empty path never is.
  static bool exists(const Path& path);
  /// Links are followed. @throws BadDataException "Empty path" @throws NotFoundException it is not there
  static bool is_directory(const Path& path);

  /// Enters the directory one component at a time; when it throws, the process stands where it got to.
  /// @throws IOException
  void chdir() const;
  /// @throws IOException
  void chmod(unsigned mode) const;
  /// @throws IOException
  void chown(unsigned uid, unsigned gid) const;
  /// @throws BadDataException "Empty path" @throws IOException
  static void rename(const Path& from, const Path& to);

  /// Makes the directory and its missing parents, all with that mode, whatever the umask. A directory that is
  /// there already gets the mode, and then IOException is thrown ("Cannot create directory …"); one that
  /// cannot be made is told of by the mode that cannot be set. The first component of a relative path must
  /// exist. @throws BadDataException "Empty path" @throws IOException
  static void createDirectories(const Path& path, unsigned mode);
  /// As above, and gives what it makes to that owner and group.
  static void createDirectories(const Path& path, unsigned uid, unsigned gid, unsigned mode);

  /// Removes a file or a directory, with `recursive` all that is below it. What is not there is no failure.
  /// A symbolic link is removed itself and never followed, also if others change the tree meanwhile.
  /// @throws BadDataException "Empty path" @throws IOException @throws SystemException a directory cannot be
  /// read
  static void remove(const Path& path, bool recursive);

 private:
  std::string m_leaf;
  bool m_isRoot = false;
};

/// Writes the text with "/".
FOKRAZO_API std::ostream& operator<<(std::ostream& stream, const Path& path);

/// Walks the entries of a directory other than "." and "..", in the system's order. Holds a descriptor until
/// it reaches the end or is destroyed. Can be moved, not copied.
class FOKRAZO_API directory_iterator {
 public:
  /// Stands on the first entry.
  /// @throws NotFoundException there is no such directory @throws SystemException it cannot be opened
  explicit directory_iterator(const Path& path);
  directory_iterator(directory_iterator&&) = default;
  directory_iterator& operator=(directory_iterator&&) = default;

  /// The end: one shared iterator.
  static const directory_iterator& end();

  /// The entry with its directory in front. Requires: not at the end.
  const Path& operator*() const { return m_entry; }
  const Path* operator->() const { return &m_entry; }
  /// Goes on to the next entry, or to the end.
  directory_iterator& operator++();

  /// Whether both are at the end, or on one directory being read.
  bool operator==(const directory_iterator& other) const { return m_handle == other.m_handle; }
  bool operator!=(const directory_iterator& other) const { return !(*this == other); }

 private:
  struct Close {
    void operator()(DIR* handle) const { closedir(handle); }
  };

  directory_iterator() = default;

  Path m_directory;
  Path m_entry;
  std::unique_ptr<DIR, Close> m_handle;
};

}  // namespace vesk
