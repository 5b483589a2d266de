/// File paths as lists of components, and operations on what they name.
#pragma once

#include <dirent.h>

#include <iosfwd>
#include <list>
#include <memory>
#include <string>

#include <fokrazo/export.h>

namespace vesk {

/// A path: its directory components in order (the list itself), a leaf that may be empty, and whether it
/// starts at the root. "/" and "\" both separate, on every platform; repeated separators count as one. A path
/// without components, leaf and root is the empty path.
///
/// Operations on files take paths of any length, even above the system's limit. Failures throw with errno as
/// code, and their message ends with the system's text. Some operations refuse the empty path with
/// BadDataException "Empty path".
class FOKRAZO_API Path : public std::list<std::string> {
 public:
  /// The root, and what string() writes for a blank.
  static constexpr char ROOT[] = "/";
  static constexpr char SPACE_REPLACEMENT[] = "_";

  /// The empty path.
  Path() = default;
  /// Parses text, as parsePath does.
  Path(const char* text);
  Path(const std::string& text);

  /// Sets this path from text.
  void parsePath(const std::string& text);
  /// The text with that separator, without a trailing one. Each blank becomes "_" unless `keepSpaces`.
  std::string string(char separator, bool keepSpaces) const;
  /// The text with backslashes.
  std::string winString() const;

  /// The text after the last separator; whether the path starts at the root.
  const std::string& leaf() const { return m_leaf; }
  bool isRoot() const { return m_isRoot; }
  /// Whether this is the empty path. (A list without components may still have a leaf or be the root.)
  bool isEmptyPath() const { return empty() && m_leaf.empty() && !m_isRoot; }

  /// Compares the texts by bytes.
  bool operator<(const Path& other) const;
  /// Whether all components are the same.
  bool operator==(const Path& other) const;
  bool operator!=(const Path& other) const { return !(*this == other); }
  /// Appends `right`. @throws BadDataException `right` starts at the root
  Path& operator/=(const Path& right);
  Path operator/(const Path& right) const;
  /// The path of the entry `name` in this directory; `name` is not parsed.
  Path entry(const std::string& name) const;

  /// Whether the file exists; false for a dangling link and for the empty path.
  static bool exists(const Path& path);
  /// Links are followed. @throws BadDataException "Empty path" @throws NotFoundException it does not exist
  static bool is_directory(const Path& path);

  /// Changes the working directory, one component at a time; after a failure it stays at the last component
  /// reached.
  /// @throws IOException
  void chdir() const;
  /// @throws IOException
  void chmod(unsigned mode) const;
  /// @throws IOException
  void chown(unsigned uid, unsigned gid) const;
  /// @throws BadDataException "Empty path" @throws IOException
  static void rename(const Path& from, const Path& to);

  /// Creates a directory and its missing parents, all with that mode, whatever the umask. If the directory
  /// exists, its mode is set and IOException "Cannot create directory …" is thrown. If it cannot be created,
  /// the exception says that its mode cannot be set. The first component of a relative path must exist.
  /// @throws BadDataException "Empty path" @throws IOException
  static void createDirectories(const Path& path, unsigned mode);
  /// As above; also sets owner and group.
  static void createDirectories(const Path& path, unsigned uid, unsigned gid, unsigned mode);

  /// Removes a file or a directory; a non-empty directory only with `recursive`. A missing path is not a
  /// failure. Symbolic links are removed, never followed, even if other processes change the tree at the same
  /// time.
  /// @throws BadDataException "Empty path" @throws IOException @throws SystemException a directory cannot be
  /// read
  static void remove(const Path& path, bool recursive);

 private:
  std::string m_leaf;
  bool m_isRoot = false;
};

/// Writes the text with "/".
FOKRAZO_API std::ostream& operator<<(std::ostream& stream, const Path& path);

/// Iterates over the entries of a directory except "." and "..", in the system's order. Holds a descriptor
/// until it reaches the end or is destroyed. Can be moved, not copied.
class FOKRAZO_API directory_iterator {
 public:
  /// Starts at the first entry.
  /// @throws NotFoundException there is no such directory @throws SystemException it cannot be opened
  explicit directory_iterator(const Path& path);
  directory_iterator(directory_iterator&&) = default;
  directory_iterator& operator=(directory_iterator&&) = default;

  /// The end: one shared iterator.
  static const directory_iterator& end();

  /// The path of the entry. Requires: not at the end.
  const Path& operator*() const { return m_entry; }
  const Path* operator->() const { return &m_entry; }
  /// Moves to the next entry, or to the end.
  directory_iterator& operator++();

  /// Whether both are at the end, or are the same iterator.
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
