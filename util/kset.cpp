#include "util/include/kset.h"

#include <sys/stat.h>
#include <unistd.h>

#include <boost/make_shared.hpp>
#include <cerrno>
#include <cstring>
#include <vector>

#include "util/include/error_util.h"
#include "util/include/file_util.h"
#include "util/include/setting.h"
#include "util/replacement_file.h"
#include "util/setting_store.h"

namespace vesk {
namespace {

constexpr char kDCFilePrefix[] = "kset.dc.";

bool isRegularFile(const std::string& path) {
  struct stat info;
  return ::lstat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

bool isDirectory(const std::string& path) {
  struct stat info;
  return ::lstat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

// Null if there is no such file, also if it disappears meanwhile: the programs that own the directory go on.
boost::shared_ptr<KSetData> read(const std::string& path) {
  if (!isRegularFile(path)) return boost::shared_ptr<KSetData>();
  try {
    auto data = boost::make_shared<KSetData>();
    data->content = ReadFile(path, &data->mode);
    return data;
  } catch (const SystemException& failure) {
    if (failure.rc() != ENOENT) throw;
    return boost::shared_ptr<KSetData>();
  }
}

void write(const std::string& path, const KSetData& data) {
  ReplacementFile file(path);
  int mode = data.mode;
  WriteFile(file.name(), data.content, &mode);
  file.commit();
}

// A directory under the name of a key set is none.
void removeFile(const std::string& path) {
  if (isDirectory(path) || ::unlink(path.c_str()) == 0 || errno == ENOENT) return;
  throwFileFailure(errno, "Cannot remove file %s", path);
}

/// The names in the directory that `isMember` takes.
std::vector<std::string> members(const std::string& dir, bool (*isMember)(const char*)) {
  std::vector<std::string> names;
  for (std::string& name : listKSetDirectory(dir))
    if (isMember(name.c_str())) names.push_back(std::move(name));
  return names;
}

}  // namespace

KSets::KSets() : m_defaultDir(getDataDir()) {}

KSets::KSets(const std::string& defaultDir) : m_defaultDir(defaultDir) {}

bool KSets::isKSetFile(const char* fileName) {
  return strncmp(fileName, kKSetPrefix, strlen(kKSetPrefix)) == 0;
}

bool KSets::isKSetDCFile(const char* fileName) {
  return strncmp(fileName, kDCFilePrefix, strlen(kDCFilePrefix)) == 0;
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
  for (const std::string& name : members(from, isKSetFile)) removeFile(from + name);
  clearSettingsMap();
}

void KSets::snapShot(const std::string& dir) {
  const std::string from = directory(dir);
  for (const std::string& name : members(from, isKSetFile))
    if (const boost::shared_ptr<KSetData> data = read(from + name)) m_snapshot[name] = data;
}

void KSets::rollBack(const std::string& dir) {
  const std::string to = directory(dir);
  for (const std::string& name : members(to, isKSetFile))
    if (m_snapshot.count(name) == 0) removeFile(to + name);
  for (const auto& file : m_snapshot) write(to + file.first, *file.second);
  m_snapshot.clear();
}

std::string KSets::directory(const std::string& dir) const {
  const std::string& chosen = dir.empty() ? m_defaultDir : dir;
  return chosen.empty() || chosen.back() == '/' ? chosen : chosen + "/";
}

}  // namespace vesk
