#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fokrazo/path.h>
#include <fokrazo/setting.h>
#include <fokrazo/strutil.h>
#include "util/error/throw.h"
#include "util/file/file_io.h"
#include "util/file/replacement_file.h"
#include "util/file/unique_fd.h"
#include "util/setting/setting_store.h"
#include "util/text/ascii.h"

namespace vesk {
namespace {

constexpr char kSource[] = "util/setting";
constexpr char kDCPrefix[] = "dc.";
constexpr char kCannotOpen[] = "Cannot open file %s";
constexpr char kCannotRead[] = "Cannot read file %s";
constexpr char kCannotWrite[] = "Cannot write file %s";
constexpr int kMaxSize = 1024;
constexpr int kMaxUnlimitedSize = 1024 * 1024;  // for settings that CheckFileSize does not limit
constexpr size_t kBlockSize = 4096;

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

// Every user can create files in "user/", and root's decisions must not depend on them.
bool isForeign(const struct stat& info, const std::string& dir, const SettingStore& store)
    FOKRAZO_REQUIRES(settingsMutex()) {
  return isRootUser() && info.st_uid != 0 && dir == store.dataDir + kUserDir;
}

[[noreturn]] void throwTooLarge(const char* operation, const std::string& name, long long size, int limit) {
  FOKRAZO_THROW(IOException, "IOException", 0, "%s kset.%s: size(%lld) exceeds maximum (%d)", operation,
                name.c_str(), size, limit);
}

void refuseControlCharacters(const char* data, size_t size, const std::string& path) {
  const bool found = std::any_of(data, data + size, [](char c) { return c != '\n' && isAsciiControl(c); });
  if (found)
    FOKRAZO_THROW(BadDataException, "BadDataException", 0, "Control character is disallowed in %s file.",
                  path.c_str());
}

// Memory grows with the bytes read, not with the file's nominal size.
std::string readText(const UniqueFd& fd, off_t size, const std::string& path) {
  std::string text;
  while (static_cast<off_t>(text.size()) < size) {
    const size_t done = text.size();
    text.resize(std::min<off_t>(done + kBlockSize, size));
    const ssize_t got = readSome(fd.get(), &text[done], text.size() - done);
    if (got < 0) throwFileFailure(errno, kCannotRead, path);
    if (got == 0)
      FOKRAZO_THROW(IOException, "IOException", 0, "Cannot read all data in file %s", path.c_str());
    refuseControlCharacters(&text[done], got, path);
    text.resize(done + got);
  }
  return text;
}

void writeText(const ReplacementFile& file, const std::string& text) {
  ssize_t written;
  do {
    written = ::write(file.fd(), text.data(), text.size());
  } while (written < 0 && errno == EINTR);
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

void throwFileFailure(int error, const char* literal, const std::string& path) {
  FOKRAZO_THROW_ERRNO(IOException, "IOException", error, error, literal, path.c_str());
}

void openReplacement(ReplacementFile& file) {
  if (!file.openUnique()) throwFileFailure(errno, kCannotOpen, file.name());
}

void commitReplacement(ReplacementFile& file, const std::string& path) {
  if (!file.sync()) throwFileFailure(errno, kCannotWrite, file.name());
  if (!file.replace()) throwFileFailure(errno, "Cannot rename file to %s", path);
}

void removeFile(const std::string& path) {
  if (::unlink(path.c_str()) == 0 || errno == ENOENT || errno == ENOTDIR) return;
  throwFileFailure(errno, "Cannot remove file %s", path);
}

bool isDCSetting(const std::string& name) {
  return name.compare(0, strlen(kDCPrefix), kDCPrefix) == 0;
}

void CheckFileSize(const char* operation, const std::string& name, long long size) {
  if (size <= kMaxSize || name == SETTING_TRUSTS || isDCSetting(name)) return;
  throwTooLarge(operation, name, size, kMaxSize);
}

void refuseTooLarge(const char* operation, const std::string& name, long long size) {
  CheckFileSize(operation, name, size);
  if (size > kMaxUnlimitedSize) throwTooLarge(operation, name, size, kMaxUnlimitedSize);
}

std::string readSettingFile(const std::string& name, const std::string& dir) {
  const LockedStore store;
  const std::string directory = dir.empty() ? store->dataDir : dir;
  const std::string path = settingPath(directory, name);
  const UniqueFd fd = openForReading(path);
  const struct stat info = statOf(fd, path);
  if (isForeign(info, directory, *store)) throwFileFailure(EPERM, kCannotRead, path);
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
