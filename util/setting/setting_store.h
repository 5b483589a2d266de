/// The settings in memory, and helpers for reading and writing them. Internal.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include <fokrazo/fixed_paths.h>
#include <fokrazo/mutex.h>
#include <fokrazo/setting.h>
#include <fokrazo/thread_annotations.h>
#include "util/file/replacement_file.h"

namespace vesk {

/// Guards the store and all file access. Recursive: saveSetting holds it while it reads.
Mutex& settingsMutex();

/// The settings in memory. One object, created on first use and never destroyed; accessed only through
/// LockedStore.
struct SettingStore {
  using Value = std::pair<std::string, SettingAccess>;

  Mutex mutex;
  std::string dataDir FOKRAZO_GUARDED_BY(settingsMutex()) = paths::kDataDir;
  std::map<std::string, Value> values FOKRAZO_GUARDED_BY(settingsMutex());
  /// The names of settings whose failed write will be retried.
  std::vector<std::string> deferred FOKRAZO_GUARDED_BY(settingsMutex());
  /// Whether this process has removed the temporary files of killed writers.
  bool cleanedUp FOKRAZO_GUARDED_BY(settingsMutex()) = false;
};

/// Locks the store. May be nested.
class FOKRAZO_SCOPED_CAPABILITY LockedStore {
 public:
  LockedStore() FOKRAZO_ACQUIRE(settingsMutex());
  ~LockedStore() noexcept(false) FOKRAZO_RELEASE();

  SettingStore* operator->() const { return &m_store; }
  SettingStore& operator*() const { return m_store; }

 private:
  /// Counts a thread's nested locks. The first one loads the configuration, and so opens the log, before
  /// locking: both take locks that must not be taken while the store is locked.
  class Hold {
   public:
    Hold();
    ~Hold() { --gHolds; }

   private:
    static thread_local int gHolds;
  };

  SettingStore& m_store;
  Hold m_hold;
  Lock m_lock;
};

using paths::kKSetPrefix;
using paths::kUserDir;

inline std::string settingPath(const std::string& dir, const std::string& name) {
  return dir + kKSetPrefix + name;
}

/// Whether the effective user is root.
bool isRootUser();
/// Whether a setting holds data of one domain controller. These are not limited, and users have a copy.
bool isDCSetting(const std::string& name);
/// CheckFileSize, with a limit of 1 MiB for the settings that it does not limit. @throws IOException
void refuseTooLarge(const char* operation, const std::string& name, long long size);
/// Throws IOException with the system's text; `literal` is a format for the path.
[[noreturn]] void throwFileFailure(int error, const char* literal, const std::string& path);
/// The first and the last step of replacing a file. @throws IOException "Cannot open file …", "Cannot write
/// file …", "Cannot rename file to …"
void openReplacement(ReplacementFile& file);
void commitReplacement(ReplacementFile& file, const std::string& path);
/// Removes a file if it exists. @throws IOException "Cannot remove file …"
void removeFile(const std::string& path);
/// The names of the entries of a directory without "." and "..".
/// @throws NotFoundException "Cannot open directory …"
std::vector<std::string> listKSetDirectory(const std::string& dir);

}  // namespace vesk
