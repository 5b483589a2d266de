#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include <fokrazo/file_util.h>
#include <fokrazo/log.h>
#include <fokrazo/path.h>
#include <fokrazo/setting.h>
#include "util/error/throw.h"
#include "util/file/file_io.h"
#include "util/setting/kset_file.h"
#include "util/setting/setting_internal.h"

namespace vesk {
namespace {

constexpr char kSource[] = "util/setting";
constexpr char kLogger[] = "util.settings";
constexpr char kPrecreateDir[] = "/precreate/";
constexpr unsigned kDataDirMode = 0755;
constexpr unsigned kUserDirMode = 01777;

[[noreturn]] void throwNoPrecreateDir() {
  const int error = errno;
  FOKRAZO_THROW(IOException, "IOException", error,
                "Failed to create temp directory to precreate computer and extension object\n");
}

std::string precreateDir() {
  char tempDir[256];
  if (GetZantrelTempDirForCurrentUser(tempDir, sizeof tempDir) != 0) throwNoPrecreateDir();
  return std::string(tempDir) + kPrecreateDir;
}

// An ordinary user's precreate directory is in a directory that others can write to, so it may be another
// user's.
void refuseForeignDirectory(const std::string& dir) {
  struct stat info;
  if (::lstat(dir.substr(0, dir.size() - 1).c_str(), &info) != 0) return;
  if (S_ISDIR(info.st_mode) && info.st_uid == ::geteuid()) return;
  errno = EPERM;
  throwNoPrecreateDir();
}

// Another process may create it at the same time.
void makeDirectory(const Path& dir, unsigned mode) {
  try {
    Path::createDirectories(dir, mode);
  } catch (const IOException& failure) {
    if (failure.rc() != EEXIST || !Path::exists(dir)) throw;
  }
}

// Ignores failures, because a missing directory is created afterwards. Does not follow links.
void openToAllUsers(const Path& dir) {
  const UniqueFd fd = openFile(dir.string('/', true), Open::Directory | Open::Unfollowed);
  if (fd) ::fchmod(fd.get(), kUserDirMode);
}

}  // namespace

std::string getDataDir() {
  const LockedStore store;
  return store->dataDir;
}

void chgDataDir(const std::string& dir) {
  const LockedStore store;
  if (!store->values.empty()) {
    VESK_LOG_TO(kLogger, Warn, "Settings Map already been created, cannot change root of data directory.");
    FOKRAZO_THROW(AlreadyException, "AlreadyException", 0, "change data dir");
  }
  VESK_LOG_TO(kLogger, Info, "Change Root of Data directory to %s.", dir.c_str());
  store->dataDir = dir;
}

void createDataDir() {
  const LockedStore store;
  const std::string precreate = precreateDir();
  if (!isRootUser()) {
    if (store->dataDir != precreate) return;
    refuseForeignDirectory(store->dataDir);
  }
  const Path userDir(store->dataDir + kUserDir);
  if (Path::exists(store->dataDir))
    openToAllUsers(userDir);
  else
    makeDirectory(store->dataDir, kDataDirMode);
  if (!Path::exists(userDir)) makeDirectory(userDir, kUserDirMode);
}

void deleteDataDir() {
  const LockedStore store;
  Path::remove(store->dataDir, true);
}

}  // namespace vesk
