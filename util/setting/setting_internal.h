/// The settings in memory. Internal.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include <fokrazo/fixed_paths.h>
#include <fokrazo/mutex.h>
#include <fokrazo/setting.h>
#include <fokrazo/thread_annotations.h>

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

/// CheckFileSize, with the limit kMaxKSetFile for the settings that it does not limit. @throws IOException
void refuseTooLarge(const char* operation, const std::string& name, long long size);

}  // namespace vesk
