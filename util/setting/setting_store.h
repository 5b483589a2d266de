/// What the settings' source files share. Internal.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include <fokrazo/fixed_paths.h>
#include <fokrazo/mutex.h>
#include <fokrazo/setting.h>
#include "util/file/replacement_file.h"

namespace vesk {

/// The settings in memory. One object, made at first use and never destroyed.
struct SettingStore {
  static SettingStore& instance();

  /// Guards the rest and all work on the files. Recursive: saveSetting holds it through its own reads.
  Mutex gMapLock;
  std::string gDataDir = paths::kDataDir;
  std::map<std::string, std::pair<std::string, SettingAccess>> gSettingsMap;
  std::vector<std::string> gRewriteSettings;  // names whose write failed and is to be repeated
  bool cleanedUp = false;                     // this process has removed what killed writers left
};

/// The store, held for as long as the object lives. May be nested in one thread.
class LockedStore {
 public:
  LockedStore();

  SettingStore* operator->() const { return &m_store; }
  SettingStore& operator*() const { return m_store; }

 private:
  /// One thread's nested holds. The first one has the configuration loaded, and thereby the log opened:
  /// reading the configuration takes locks that must not be waited for under the store's.
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
