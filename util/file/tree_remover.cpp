#include "util/file/tree_remover.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "util/error/throw.h"

namespace vesk {
namespace {

constexpr char kSource[] = "util/path";

UniqueFd openForListing(int directory, const char* name, const std::string& text) {
  UniqueFd fd = openFileAt(directory, name, Open::Directory | Open::Unfollowed);
  if (!fd) FOKRAZO_THROW(SystemException, "SystemException", errno, "%s: Failed to open", text.c_str());
  return fd;
}

std::vector<std::string> entriesOf(const UniqueFd& directory, const std::string& text) {
  std::vector<std::string> names;
  if (!listDirectory(directory, names))
    FOKRAZO_THROW(SystemException, "SystemException", errno, "%s: Failed to open", text.c_str());
  return names;
}

}  // namespace

TreeRemover::TreeRemover(std::string root, const PathLocation& location)
    : m_root(std::move(root)), m_location(location) {}

void TreeRemover::removeContents() {
  m_directory = openForListing(m_location.directory(), m_location.name(), m_root);
  m_levels.push_back({std::string(), FileId(), entriesOf(m_directory, m_root)});
  while (!m_levels.empty()) {
    std::vector<std::string>& pending = m_levels.back().pending;
    if (pending.empty()) {
      leave();
      continue;
    }
    const std::string name = std::move(pending.back());
    pending.pop_back();
    removeEntry(name);
  }
}

void TreeRemover::removeEntry(const std::string& name) {
  struct stat info;
  if (::fstatat(m_directory.get(), name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) return;
  if (S_ISDIR(info.st_mode)) {
    enter(name);
  } else if (::unlinkat(m_directory.get(), name.c_str(), 0) != 0) {
    const int error = errno;
    throwPathFailure(error, "Cannot remove file %s", pathOf(name));
  }
}

void TreeRemover::enter(const std::string& name) {
  const std::string text = pathOf(name);
  UniqueFd child = openForListing(m_directory.get(), name.c_str(), text);
  std::vector<std::string> entries = entriesOf(child, text);
  if (entries.empty()) {
    removeDirectory(name);
    return;
  }
  struct stat parent;
  if (::fstat(m_directory.get(), &parent) != 0)
    FOKRAZO_THROW(SystemException, "SystemException", errno, "%s: Failed to open", text.c_str());
  m_levels.push_back({name, FileId(parent), std::move(entries)});
  m_directory = std::move(child);
}

void TreeRemover::leave() {
  const Level done = std::move(m_levels.back());
  m_levels.pop_back();
  if (m_levels.empty()) return;
  struct stat info;
  UniqueFd parent = openFileAt(m_directory.get(), "..", Open::Location | Open::Directory);
  if (!parent || ::fstat(parent.get(), &info) != 0 || FileId(info) != done.parent)
    // The directory was moved; its new parent must not be touched.
    throwPathFailure(ESTALE, "Cannot remove directory %s", pathOf(done.name));
  m_directory = std::move(parent);
  removeDirectory(done.name);
}

void TreeRemover::removeDirectory(const std::string& name) {
  if (::unlinkat(m_directory.get(), name.c_str(), AT_REMOVEDIR) == 0) return;
  const int error = errno;
  throwPathFailure(error, "Cannot remove directory %s", pathOf(name));
}

std::string TreeRemover::pathOf(const std::string& name) const {
  std::string path = m_root;
  if (path.back() != '/') path += '/';
  for (const Level& level : m_levels)
    if (!level.name.empty()) (path += level.name) += '/';
  return path + name;
}

}  // namespace vesk
