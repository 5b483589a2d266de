/// The settings in memory, and helpers of the source files that read and write them. Internal.
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

/// Guards the store and all work on the files. Recursive: saveSetting holds it through its own reads.
Mutex& settingsMutex();

/// The settings in memory. One object, made at first use and never destroyed; only LockedStore hands it out.
struct SettingStore {
  using Value = std::pair<std::string, SettingAccess>;

  Mutex mutex;
  std::string dataDir FOKRAZO_GUARDED_BY(settingsMutex()) = paths::kDataDir;
  std::map<std::string, Value> values FOKRAZO_GUARDED_BY(settingsMutex());
  /// The names of settings whose write failed and is to be repeated.
  std::vector<std::string> waiting FOKRAZO_GUARDED_BY(settingsMutex());
  /// Whether this process has removed what killed writers left.
  bool cleanedUp FOKRAZO_GUARDED_BY(settingsMutex()) = false;
};

/// Holds the store. May be nested in one thread.
class FOKRAZO_SCOPED_CAPABILITY LockedStore {
 public:
  LockedStore() FOKRAZO_ACQUIRE(settingsMutex());
  ~LockedStore() noexcept(false) FOKRAZO_RELEASE();

  SettingStore* operator->() const { return &m_store; }
  SettingStore& operator*() const { return m_store; }

 private:
  /// Counts one thread's nested holds. The first one loads the configuration, and so opens the log: that
  /// takes locks that a thread must not wait for while it holds the store.
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
/// Whether a setting holds data of one domain controller: these have no limit and a copy for users.
bool isDCSetting(const std::string& name);
/// CheckFileSize, and 1 MiB for the settings that it does not limit. @throws IOException
void refuseTooLarge(const char* operation, const std::string& name, long long size);
/// Throws IOException with the system's text; the literal takes the path.
[[noreturn]] void throwFileFailure(int error, const char* literal, const std::string& path);
/// The first and the last step of replacing a file. @throws IOException "Cannot open file …", "Cannot write
/// file …", "Cannot rename file to …"
void openReplacement(ReplacementFile& file);
void commitReplacement(ReplacementFile& file, const std::string& path);
/// Removes a file, if there is one. @throws IOException "Cannot remove file …"
void removeFile(const std::string& path);
/// The names of the entries of a directory without "." and "..".
/// @throws NotFoundException "Cannot open directory …"
std::vector<std::string> listKSetDirectory(const std::string& dir);

}  // namespace vesk
