#include <fokrazo/path.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ostream>
#include <vector>

#include "util/error/throw.h"
#include "util/file/open_file.h"
#include "util/file/path_location.h"
#include "util/file/tree_remover.h"
#include "util/text/made_once.h"

namespace vesk {
namespace {

constexpr char kSource[] = "util/path";
constexpr char kSeparators[] = "/\\";

struct Owner {
  unsigned uid;
  unsigned gid;
};

void refuseEmpty(const Path& path) {
  if (path.isEmptyPath()) FOKRAZO_THROW(BadDataException, "BadDataException", 0, "Empty path");
}

std::string textOf(const Path& path) {
  return path.string('/', true);
}

int statAt(const Path& path, struct stat& info, int flags) {
  return callAt(textOf(path),
                [&](int directory, const char* name) { return ::fstatat(directory, name, &info, flags); });
}

int chmodAt(const Path& path, unsigned mode) {
  return callAt(textOf(path),
                [=](int directory, const char* name) { return ::fchmodat(directory, name, mode, 0); });
}

int chownAt(const Path& path, const Owner& owner) {
  return callAt(textOf(path), [=](int directory, const char* name) {
    return ::fchownat(directory, name, owner.uid, owner.gid, 0);
  });
}

/// The last component of a non-empty path.
const std::string& lastOf(const Path& path) {
  return path.leaf().empty() ? path.back() : path.leaf();
}

/// The path without its last component; the root is its own parent.
Path parentOf(const Path& path) {
  Path parent;
  if (path.isRoot()) parent.parsePath(Path::ROOT);
  parent.assign(path.begin(), path.end());
  if (path.leaf().empty() && !parent.empty()) parent.pop_back();
  return parent;
}

// Ignores the result of mkdir: an existing directory gets mode and owner too, and without a directory setting
// them fails.
void makeDirectory(const Path& path, unsigned mode, const Owner* owner) {
  const int made =
      callAt(textOf(path), [=](int directory, const char* name) { return ::mkdirat(directory, name, mode); });
  const int error = errno;
  path.chmod(mode);
  if (owner) path.chown(owner->uid, owner->gid);
  if (made != 0) throwPathFailure(error, "Cannot create directory %s", textOf(path));
}

void makeDirectories(const Path& path, unsigned mode, const Owner* owner) {
  refuseEmpty(path);
  std::vector<std::string> missing;
  Path directory = parentOf(path);
  while (!Path::exists(directory)) {
    refuseEmpty(directory);
    if (directory.empty() && directory.leaf().empty()) break;  // even the root is inaccessible
    missing.push_back(lastOf(directory));
    directory = parentOf(directory);
  }
  for (auto name = missing.rbegin(); name != missing.rend(); ++name) {
    directory = directory.entry(*name);
    makeDirectory(directory, mode, owner);
  }
  makeDirectory(path, mode, owner);
}

}  // namespace

Path::Path(const char* text) {
  parsePath(text);
}

Path::Path(const std::string& text) {
  parsePath(text);
}

void Path::parsePath(const std::string& text) {
  clear();
  m_isRoot = text.compare(0, strlen(ROOT), ROOT) == 0;
  size_t start = m_isRoot ? strlen(ROOT) : 0;
  for (size_t end; (end = text.find_first_of(kSeparators, start)) != std::string::npos; start = end + 1)
    if (end > start) push_back(text.substr(start, end - start));
  m_leaf = text.substr(start);
}

std::string Path::string(char separator, bool keepSpaces) const {
  std::string text = m_isRoot ? ROOT : "";
  for (const std::string& component : *this) (text += component) += separator;
  if (!m_leaf.empty())
    text += m_leaf;
  else
    text.erase(std::min(text.rfind(separator), text.size()));
  if (!keepSpaces) std::replace(text.begin(), text.end(), ' ', SPACE_REPLACEMENT[0]);
  return text.empty() && m_isRoot ? ROOT : text;
}

std::string Path::winString() const {
  return string('\\', true);
}

std::ostream& operator<<(std::ostream& stream, const Path& path) {
  return stream << path.string('/', true);
}

bool Path::operator<(const Path& other) const {
  return textOf(*this) < textOf(other);
}

bool Path::operator==(const Path& other) const {
  return m_isRoot == other.m_isRoot && m_leaf == other.m_leaf && size() == other.size() &&
         std::equal(begin(), end(), other.begin());
}

Path& Path::operator/=(const Path& right) {
  if (right.m_isRoot) FOKRAZO_THROW(BadDataException, "BadDataException", 0, "Attempt to append root path");
  const Path added = right;  // `right` may be *this
  if (!m_leaf.empty()) push_back(m_leaf);
  insert(end(), added.begin(), added.end());
  m_leaf = added.m_leaf;
  return *this;
}

Path Path::operator/(const Path& right) const {
  Path joined = *this;
  joined /= right;
  return joined;
}

Path Path::entry(const std::string& name) const {
  Path path = *this;
  if (!m_leaf.empty()) path.push_back(m_leaf);
  path.m_leaf = name;
  return path;
}

bool Path::exists(const Path& path) {
  struct stat info;
  return !path.isEmptyPath() && statAt(path, info, 0) == 0;
}

bool Path::is_directory(const Path& path) {
  refuseEmpty(path);
  struct stat info;
  if (statAt(path, info, 0) != 0) {
    const int error = errno;
    FOKRAZO_THROW_ERRNO(NotFoundException, "NotFoundException", error, error, "Cannot stat %s",
                        textOf(path).c_str());
  }
  return S_ISDIR(info.st_mode);
}

void Path::chdir() const {
  const auto enter = [this](const std::string& name) {
    if (::chdir(name.c_str()) == 0) return;
    const int error = errno;
    throwPathFailure(error, "can't change current dir to %s", textOf(*this));
  };
  if (m_isRoot) enter(ROOT);
  for (const std::string& component : *this) enter(component);
  if (!m_leaf.empty() || isEmptyPath()) enter(m_leaf);
}

void Path::chmod(unsigned mode) const {
  if (chmodAt(*this, mode) == 0) return;
  const int error = errno;
  FOKRAZO_THROW_ERRNO(IOException, "IOException", error, error, "can't change permissions of %s to %x",
                      textOf(*this).c_str(), mode);
}

void Path::chown(unsigned uid, unsigned gid) const {
  if (chownAt(*this, {uid, gid}) == 0) return;
  const int error = errno;
  FOKRAZO_THROW_ERRNO(IOException, "IOException", error, error, "can't change owner of %s to %d/%d",
                      textOf(*this).c_str(), static_cast<int>(uid), static_cast<int>(gid));
}

void Path::rename(const Path& from, const Path& to) {
  refuseEmpty(from);
  refuseEmpty(to);
  const int result = callAt(textOf(from), [&](int fromDirectory, const char* fromName) {
    return callAt(textOf(to), [&](int toDirectory, const char* toName) {
      return ::renameat(fromDirectory, fromName, toDirectory, toName);
    });
  });
  if (result == 0) return;
  const int error = errno;
  FOKRAZO_THROW_ERRNO(IOException, "IOException", error, error, "Cannot rename %s to %s",
                      textOf(from).c_str(), textOf(to).c_str());
}

void Path::createDirectories(const Path& path, unsigned mode) {
  makeDirectories(path, mode, nullptr);
}

void Path::createDirectories(const Path& path, unsigned uid, unsigned gid, unsigned mode) {
  const Owner owner{uid, gid};
  makeDirectories(path, mode, &owner);
}

void Path::remove(const Path& path, bool recursive) {
  refuseEmpty(path);
  const std::string text = textOf(path);
  const PathLocation location(text);
  struct stat info;
  if (location.error() != 0 ||
      ::fstatat(location.directory(), location.name(), &info, AT_SYMLINK_NOFOLLOW) != 0)
    return;
  const bool isDirectory = S_ISDIR(info.st_mode);
  if (isDirectory && recursive) TreeRemover(text, location).removeContents();
  if (::unlinkat(location.directory(), location.name(), isDirectory ? AT_REMOVEDIR : 0) == 0) return;
  throwPathFailure(errno, isDirectory ? "Cannot remove directory %s" : "Cannot remove file %s", text);
}

directory_iterator::directory_iterator(const Path& path) : m_directory(path) {
  if (!Path::exists(path))
    FOKRAZO_THROW(NotFoundException, "NotFoundException", 0, "%s: No such directory", textOf(path).c_str());
  UniqueFd fd(callAt(textOf(path), [](int directory, const char* name) {
    return openFileAt(directory, name, Open::Directory).release();
  }));
  m_handle.reset(fd ? ::fdopendir(fd.get()) : nullptr);
  if (!m_handle)
    FOKRAZO_THROW(SystemException, "SystemException", errno, "%s: Failed to open", textOf(path).c_str());
  fd.release();
  ++*this;
}

const directory_iterator& directory_iterator::end() {
  static MadeOnce<const directory_iterator> end;
  return end.get([] { return std::unique_ptr<const directory_iterator>(new directory_iterator); });
}

directory_iterator& directory_iterator::operator++() {
  if (!m_handle) return *this;
  const dirent* entry;
  do {
    entry = ::readdir(m_handle.get());
  } while (entry && (strcmp(entry->d_name, ".") == 0 || strcmp(entry->d_name, "..") == 0));
  if (entry)
    m_entry = m_directory.entry(entry->d_name);
  else
    m_handle.reset();
  return *this;
}

}  // namespace vesk
