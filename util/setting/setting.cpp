#include <fokrazo/setting.h>

#include <algorithm>

#include <fokrazo/fixed_paths.h>
#include <fokrazo/log.h>
#include <fokrazo/path.h>
#include <fokrazo/properties.h>
#include <fokrazo/propnames.h>
#include <fokrazo/strutil.h>
#include "util/error/throw.h"
#include "util/setting/kset_file.h"
#include "util/setting/setting_internal.h"

namespace vesk {
namespace {

constexpr char kSource[] = "util/setting";
constexpr char kLogger[] = "util.settings";
constexpr char kAutoZone[] = "00112233445566778899aabbccddeeff";

bool filesDisabled() {
  return Props(false, false)->getBool(PN::DISABLE_KSET_FILES, false);
}

// Root prefers the system's file, other users the one in "user/".
std::string readFromFiles(const std::string& name) {
  const std::string dataDir = getDataDir();
  if (!isDCSetting(name.c_str())) return readSettingFile(name, dataDir);
  const std::string userDir = dataDir + kUserDir;
  try {
    return readSettingFile(name, isRootUser() ? dataDir : userDir);
  } catch (const VESKException&) {
    return readSettingFile(name, isRootUser() ? userDir : dataDir);
  }
}

bool isUnchanged(const std::string& name, const std::string& value) {
  return trimWhiteSpace(value) == trimWhiteSpace(internalGetSetting(name, std::string()));
}

bool isDeferred(const SettingStore& store, const std::string& name) FOKRAZO_REQUIRES(settingsMutex()) {
  return std::find(store.deferred.begin(), store.deferred.end(), name) != store.deferred.end();
}

void cleanUpOnce(SettingStore& store, const std::string& dir) FOKRAZO_REQUIRES(settingsMutex()) {
  if (store.cleanedUp) return;
  CleanTempSettingFiles(dir);
  store.cleanedUp = true;
}

// Returns false if the write must stay deferred.
bool rewrite(const SettingStore& store, const std::string& name, const std::string& dir)
    FOKRAZO_REQUIRES(settingsMutex()) {
  const auto entry = store.values.find(name);
  if (entry == store.values.end()) return true;
  try {
    writeSettingFile(name, entry->second.first, entry->second.second, dir);
    return true;
  } catch (const VESKException&) {
    return false;
  }
}

// An unwritten value must not stay in memory: saving it again would do nothing.
void forgetUnlessDeferred(SettingStore& store, const std::string& name) FOKRAZO_REQUIRES(settingsMutex()) {
  if (!isDeferred(store, name)) store.values.erase(name);
}

void writeOrDefer(SettingStore& store, const std::string& name, const std::string& value,
                  SettingAccess access, bool deferOnFailure) FOKRAZO_REQUIRES(settingsMutex()) {
  const std::string dir = isRootUser() ? store.dataDir : store.dataDir + kUserDir;
  try {
    writeSettingFile(name, value, access, dir);
    rewriteSettingFiles();
  } catch (const IOException&) {
    if (!deferOnFailure || dir != paths::kDataDir) {
      forgetUnlessDeferred(store, name);
      throw;
    }
    if (!isDeferred(store, name)) store.deferred.push_back(name);
  }
}

}  // namespace

std::string GetSetting(const std::string& name, const std::string& fallback) {
  try {
    return loadSetting(name, false);
  } catch (const VESKException&) {
    return fallback;
  }
}

std::string internalGetSetting(const std::string& name, const std::string& fallback) {
  try {
    return loadSettingFromFile(name);
  } catch (const VESKException&) {
    return fallback;
  }
}

std::string loadSetting(const std::string& name, bool fromFileOnly) {
  if (!fromFileOnly) {
    const std::string property = Props(false, false)->getString(kKSetPrefix + name);
    if (!property.empty()) return property;
    if (filesDisabled())
      FOKRAZO_THROW(IOException, "IOException", 0,
                    "No property found for %s and file I/O disabled in properties file", name.c_str());
  }
  const LockedStore store;
  const auto held = store->values.find(name);
  if (held != store->values.end()) return held->second.first;
  const std::string value = readFromFiles(name);
  store->values[name] = {value, SETTING_DEFAULT};
  return value;
}

std::string loadSettingFromFile(const std::string& name) {
  return loadSetting(name, true);
}

void saveSetting(const std::string& name, const std::string& value, SettingAccess access, bool deferOnFailure,
                 bool force) {
  const bool toProperties = filesDisabled();
  if (toProperties) Props(false, false)->setString(kKSetPrefix + name, value);
  const bool toFile = !toProperties && (isRootUser() || isDCSetting(name.c_str()));
  const LockedStore store;
  if (!value.empty() && !force && isUnchanged(name, value)) return;
  // Too large a value is never deferred: no later attempt would succeed.
  if (toFile) refuseTooLarge("Write", name, trimWhiteSpace(value).size());
  store->values[name] = {value, access};
  VESK_LOG_TO(kLogger, Debug, "Setting %s to %s\n", name.c_str(), value.c_str());
  if (toFile) writeOrDefer(*store, name, value, access, deferOnFailure);
}

int rewriteSettingFiles() {
  const LockedStore store;
  const std::string dir = isRootUser() ? store->dataDir : store->dataDir + kUserDir;
  cleanUpOnce(*store, dir);
  std::vector<std::string>& deferred = store->deferred;
  if (deferred.empty()) return 0;
  auto failed = deferred.begin();
  while (failed != deferred.end() && rewrite(*store, *failed, dir)) ++failed;
  deferred.erase(deferred.begin(), failed);
  CleanTempSettingFiles(dir);
  return static_cast<int>(deferred.size());
}

void clearSettingsMap() {
  const LockedStore store;
  store->values.clear();
}

bool joined() {
  if (Path::exists(paths::kJoinInProgressFile)) return false;
  try {
    return !loadSetting(SETTING_DOMAIN_NAME, false).empty() && !loadSetting(SETTING_HOST_NAME, false).empty();
  } catch (const VESKException&) {
    return false;
  }
}

void CheckEssentialKSets() {
  const std::string zoneName = GetSetting(SETTING_ZONE_REALNAME, std::string());
  const std::string schema = GetSetting(SETTING_SCHEMA, std::string());
  const std::string zone = GetSetting(SETTING_ZONE_GUID, std::string());
  const std::string host = GetSetting(SETTING_HOST_NAME, std::string());
  const char* problem = nullptr;
  if (host.empty())
    problem = "Cannot find key sets of host.";
  else if (schema.empty())
    problem = "Cannot find key sets of zone schema.";
  else if (schema == "NULL_AUTO" && zone != kAutoZone)
    problem = "Incorrect key sets of zone guid for auto zone.";
  else if (schema != "NULL" && schema != "NULL_AUTO" && (zone.empty() || zoneName.empty()))
    problem = "Cannot find key sets of zone name or zone guid.";
  if (problem) FOKRAZO_THROW(IOException, "IOException", 0, "%s", problem);
}

}  // namespace vesk
