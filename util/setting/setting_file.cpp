#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fokrazo/ascii.h>
#include <fokrazo/path.h>
#include <fokrazo/setting.h>
#include <fokrazo/strutil.h>
#include "util/error/throw.h"
#include "util/file/file_io.h"
#include "util/file/replacement_file.h"
#include "util/file/unique_fd.h"
#include "util/setting/kset_file.h"
#include "util/setting/setting_internal.h"

namespace vesk {
namespace {

constexpr char kSource[] = "util/setting";
constexpr char kCannotRead[] = "Cannot read file %s";
constexpr int kMaxSize = 1024;

constexpr mode_t kPrivateMode = 0600;
constexpr mode_t kPublicMode = 0644;
constexpr mode_t kUsersPublicMode = 0666;

mode_t modeOf(SettingAccess access) {
  if (access != SETTING_PUBLIC) return kPrivateMode;
  return isRootUser() ? kPublicMode : kUsersPublicMode;
}

// Every user can write to "user/".
UniqueFd openForReading(const std::string& path) {
  UniqueFd fd = openFile(path, Open::Unfollowed);
  if (fd) return fd;
  throwFileFailure(errno, kCannotOpen, path);
}

struct stat statOf(const UniqueFd& fd, const std::string& path) {
  struct stat info;
  if (::fstat(fd.get(), &info) == 0) return info;
  throwFileFailure(errno, "Cannot stat file to %s", path);
}

[[noreturn]] void throwTooLarge(const char* operation, const std::string& name, long long size, int limit) {
  FOKRAZO_THROW(IOException, "IOException", 0, "%s kset.%s: size(%lld) exceeds maximum (%d)", operation,
                name.c_str(), size, limit);
}

void refuseControlCharacters(const std::string& text, const std::string& path) {
  const bool found =
      std::any_of(text.begin(), text.end(), [](char c) { return c != '\n' && isAsciiControl(c); });
  if (found)
    FOKRAZO_THROW(BadDataException, "BadDataException", 0, "Control character is disallowed in %s file.",
                  path.c_str());
}

// Ignores what was appended after `size` was checked.
std::string readText(const UniqueFd& fd, off_t size, const std::string& path) {
  std::string text;
  if (!readAll(fd.get(), text, kMaxKSetFile)) throwFileFailure(errno, kCannotRead, path);
  if (static_cast<off_t>(text.size()) < size)
    FOKRAZO_THROW(IOException, "IOException", 0, "Cannot read all data in file %s", path.c_str());
  text.resize(size);
  refuseControlCharacters(text, path);
  return text;
}

void writeText(const ReplacementFile& file, const std::string& text) {
  const ssize_t written = writeSome(file.fd(), text.data(), text.size());
  if (written < 0) throwFileFailure(errno, kCannotWrite, file.name());
  if (static_cast<size_t>(written) != text.size())
    FOKRAZO_THROW(IOException, "IOException", 0, "Cannot write all data to file %s", file.name().c_str());
}

// Sets the mode before the rename, so that the new value never has the wrong mode.
void replaceFile(const std::string& path, const std::string& text, mode_t mode) {
  ReplacementFile file(path);
  openReplacement(file);
  writeText(file, text);
  if (::fchmod(file.fd(), mode) != 0) throwFileFailure(errno, "Cannot chmod file %s", path);
  commitReplacement(file, path);
}

}  // namespace

void CheckFileSize(const char* operation, const std::string& name, long long size) {
  if (size <= kMaxSize || name == SETTING_TRUSTS || isDCSetting(name.c_str())) return;
  throwTooLarge(operation, name, size, kMaxSize);
}

void refuseTooLarge(const char* operation, const std::string& name, long long size) {
  CheckFileSize(operation, name, size);
  constexpr int kMost = kMaxKSetFile;
  if (size > kMost) throwTooLarge(operation, name, size, kMost);
}

std::string readSettingFile(const std::string& name, const std::string& dir) {
  const LockedStore store;
  const std::string directory = dir.empty() ? store->dataDir : dir;
  const std::string path = settingPath(directory, name);
  const UniqueFd fd = openForReading(path);
  const struct stat info = statOf(fd, path);
  if (isForeign(path, info, store->dataDir)) throwFileFailure(EPERM, kCannotRead, path);
  refuseTooLarge("Read", name, info.st_size);
  // It may be another user's FIFO or device.
  if (!S_ISREG(info.st_mode)) throwFileFailure(S_ISDIR(info.st_mode) ? EISDIR : EINVAL, kCannotRead, path);
  return trimWhiteSpace(readText(fd, info.st_size, path));
}

void writeSettingFile(const std::string& name, const std::string& value, SettingAccess access,
                      const std::string& dir) {
  const LockedStore store;
  const std::string text = trimWhiteSpace(value);
  const std::string directory = dir.empty() ? store->dataDir : dir;
  const std::string path = settingPath(directory, name);
  createDataDir();
  if (text.empty()) {
    removeFile(path);
  } else {
    refuseTooLarge("Write", name, text.size());
    replaceFile(path, text, modeOf(access));
  }
  // A user's copy of the old value must not outlive it.
  if (isRootUser()) ::unlink(settingPath(directory + kUserDir, name).c_str());
}

void CleanTempSettingFiles(const std::string& dir) {
  const LockedStore lock;
  const std::string base = dir.empty() || dir.back() == '/' ? dir : dir + "/";
  for (const std::string& name : listKSetDirectory(dir)) {
    const std::string path = base + name;
    if (ReplacementFile::isTemporary(path)) ReplacementFile::removeLeftover(path);
  }
}

bool SettingExists(const std::string& name) {
  struct stat info;
  return ::stat(settingPath(getDataDir(), name).c_str(), &info) == 0;
}

time_t SettingModTime(const std::string& name) {
  struct stat info;
  return ::stat(settingPath(getDataDir(), name).c_str(), &info) == 0 ? info.st_mtime : 0;
}

}  // namespace vesk
