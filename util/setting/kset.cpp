#include <fokrazo/kset.h>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <boost/make_shared.hpp>
#include <cerrno>
#include <cstring>
#include <vector>

#include <fokrazo/fixed_paths.h>
#include <fokrazo/setting.h>
#include "util/file/file_io.h"
#include "util/file/replacement_file.h"
#include "util/setting/kset_file.h"

namespace vesk {
namespace {

// The type bits of the mode (S_IFREG and others); 0 if unknown.
mode_t typeOf(const std::string& path) {
  struct stat info;
  return ::lstat(path.c_str(), &info) == 0 ? info.st_mode & S_IFMT : 0;
}

// Whether opening failed because there is no such regular file. Without permission to open it, checks its
// type.
bool isNotRegularFile(const std::string& path, int error) {
  if (error != EACCES) return error == ENOENT || error == ENOTDIR || isNeverRegular(error);
  const mode_t type = typeOf(path);
  return type != 0 && type != S_IFREG;
}

// Null if there is no such regular file, or it must not be read. Checks the open file, not the path, because
// others may change the directory.
boost::shared_ptr<KSetData> read(const std::string& path) {
  const UniqueFd fd = openFile(path, Open::Unfollowed);
  if (!fd) {
    const int error = errno;
    if (isNotRegularFile(path, error)) return boost::shared_ptr<KSetData>();
    throwCallFailed(error);
  }
  struct stat info;
  if (::fstat(fd.get(), &info) != 0) throwCallFailed(errno);
  if (!S_ISREG(info.st_mode) || isForeign(path, info, getDataDir())) return boost::shared_ptr<KSetData>();
  auto data = boost::make_shared<KSetData>();
  data->mode = info.st_mode & kPermissionBits;
  if (!readAll(fd.get(), data->content, kMaxKSetFile)) throwCallFailed(errno);
  return data;
}

void write(const std::string& path, const KSetData& data) {
  ReplacementFile file(path);
  openReplacement(file);
  if (!file.write(data.content, data.mode)) throwCallFailed(errno);
  commitReplacement(file, path);
}

// Keeps directories, and temporary files whose writer is alive.
void removeEntry(const std::string& path) {
  if (ReplacementFile::isTemporary(path))
    ReplacementFile::removeLeftover(path);
  else if (typeOf(path) != S_IFDIR)
    removeFile(path);
}

/// The names in the directory that `isMember` accepts.
std::vector<std::string> entries(const std::string& dir, bool (*isMember)(const char*)) {
  std::vector<std::string> names;
  for (std::string& name : listKSetDirectory(dir))
    if (isMember(name.c_str())) names.push_back(std::move(name));
  return names;
}

/// As entries, without temporary files.
std::vector<std::string> members(const std::string& dir, bool (*isMember)(const char*)) {
  std::vector<std::string> names = entries(dir, isMember);
  names.erase(std::remove_if(names.begin(), names.end(), ReplacementFile::isTemporary), names.end());
  return names;
}

}  // namespace

KSets::KSets() : m_defaultDir(getDataDir()) {}

KSets::KSets(const std::string& defaultDir) : m_defaultDir(defaultDir) {}

bool KSets::isKSetFile(const char* fileName) {
  return strncmp(fileName, kKSetPrefix, strlen(kKSetPrefix)) == 0;
}

bool KSets::isKSetDCFile(const char* fileName) {
  return isKSetFile(fileName) && isDCSetting(fileName + strlen(kKSetPrefix));
}

void KSets::copy(const std::string& toDir, const std::string& fromDir, const std::string& fileName) const {
  const boost::shared_ptr<KSetData> data = read(directory(fromDir) + fileName);
  if (data) write(directory(toDir) + fileName, *data);
}

void KSets::copy(const std::string& toDir, const std::string& fromDir) const {
  for (const std::string& name : members(directory(fromDir), isKSetFile)) copy(toDir, fromDir, name);
}

void KSets::copyDCs(const std::string& toDir, const std::string& fromDir) const {
  for (const std::string& name : members(directory(fromDir), isKSetDCFile)) copy(toDir, fromDir, name);
}

void KSets::clean(const std::string& dir) const {
  const std::string from = directory(dir);
  for (const std::string& name : entries(from, isKSetFile)) removeEntry(from + name);
  clearSettingsMap();
}

void KSets::snapShot(const std::string& dir) {
  const std::string from = directory(dir);
  for (const std::string& name : members(from, isKSetFile))
    if (const boost::shared_ptr<KSetData> data = read(from + name)) m_snapshot[name] = data;
}

void KSets::rollBack(const std::string& dir) {
  const std::string to = directory(dir);
  for (const std::string& name : entries(to, isKSetFile))
    if (m_snapshot.count(name) == 0) removeEntry(to + name);
  for (const auto& file : m_snapshot) write(to + file.first, *file.second);
  m_snapshot.clear();
}

std::string KSets::directory(const std::string& dir) const {
  const std::string& chosen = dir.empty() ? m_defaultDir : dir;
  return chosen.empty() || chosen.back() == '/' ? chosen : chosen + "/";
}

}  // namespace vesk
