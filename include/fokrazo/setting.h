/// Settings: the machine's joined state, one small text file ("kset." + name) per value in the data
/// directory. Processes of every user read them; the join and the daemon write them. Files change only by
/// rename, so a reader in any process sees either the old value or the new one, even if the writer is killed.
///
/// Once read, a setting stays in this process's memory until clearSettingsMap(). A property "kset." + name of
/// the configuration takes precedence over the file.
///
/// Thread-safe: one recursive lock is held during each operation, including file access. It is taken after
/// the locks of the properties, never before them. Unless a comment says otherwise, a failure is an
/// IOException, with errno as code if a system call failed.
#pragma once

#include <ctime>
#include <string>

#include <fokrazo/export.h>

/// The names of the settings.
inline constexpr char SETTING_MACHINE_SITE[] = "site";
inline constexpr char SETTING_DOMAIN_NAME[] = "domain";
inline constexpr char SETTING_HOST_NAME[] = "host";
inline constexpr char SETTING_PREW2K_HOST_NAME[] = "prew2k.host";
inline constexpr char SETTING_PASSWORD_TIMESTAMP[] = "password.change.timestamp";
inline constexpr char SETTING_ZONE_GUID[] = "zone";
inline constexpr char SETTING_ZONE_REALNAME[] = "zonename";
inline constexpr char SETTING_DOMAIN_CONTROLLER[] = "domaincontroller";
inline constexpr char SETTING_SCHEMA[] = "schema";
inline constexpr char SETTING_NIS_DOMAIN[] = "sfudomain";
inline constexpr char SETTING_PREFERRED_ENCTYPE[] = "preferred.enctype";
inline constexpr char SETTING_DES_SALT[] = "des.salt";
inline constexpr char SETTING_GLOBAL_CATALOG[] = "globalcatalog";
inline constexpr char SETTING_FOREST_NAME[] = "forest";
inline constexpr char SETTING_HOSTSID[] = "hostsid";
inline constexpr char SETTING_CACHE_EXPIRED[] = "cache.expired";
inline constexpr char SETTING_TRUSTS[] = "trusts";

namespace vesk {

using ::SETTING_CACHE_EXPIRED;
using ::SETTING_DES_SALT;
using ::SETTING_DOMAIN_CONTROLLER;
using ::SETTING_DOMAIN_NAME;
using ::SETTING_FOREST_NAME;
using ::SETTING_GLOBAL_CATALOG;
using ::SETTING_HOST_NAME;
using ::SETTING_HOSTSID;
using ::SETTING_MACHINE_SITE;
using ::SETTING_NIS_DOMAIN;
using ::SETTING_PASSWORD_TIMESTAMP;
using ::SETTING_PREFERRED_ENCTYPE;
using ::SETTING_PREW2K_HOST_NAME;
using ::SETTING_SCHEMA;
using ::SETTING_TRUSTS;
using ::SETTING_ZONE_GUID;
using ::SETTING_ZONE_REALNAME;

/// Who may read a setting's file.
enum SettingAccess {
  SETTING_DEFAULT = 0,  ///< only its owner
  SETTING_PUBLIC = 1,   ///< everyone
};

/// The data directory, "/var/velmora/" unless changed; it ends in "/".
FOKRAZO_API std::string getDataDir();
/// Moves the data directory. Requires: `dir` ends in "/".
/// @throws AlreadyException settings are in memory, and would mix with those of the new directory
FOKRAZO_API void chgDataDir(const std::string& dir);
/// Creates the data directory and its "user/". Without root rights it does so only if the data directory is
/// "precreate" in the user's temporary directory (GetZantrelTempDirForCurrentUser); otherwise it does
/// nothing.
FOKRAZO_API void createDataDir();
/// Removes the data directory and its content.
FOKRAZO_API void deleteDataDir();

/// The value of a setting, or `fallback` if it has none or cannot be read.
FOKRAZO_API std::string GetSetting(const std::string& name, const std::string& fallback);
/// As GetSetting, but ignores properties.
FOKRAZO_API std::string internalGetSetting(const std::string& name, const std::string& fallback);
/// The value of a setting: from the property, from memory or from the file, in this order. With
/// `fromFileOnly` properties are ignored. Names that begin with "dc." are also read from "user/", where every
/// user may write; root reads only files that belong to root.
/// @throws IOException there is no file, or the configuration forbids files
/// @throws BadDataException as readSettingFile
FOKRAZO_API std::string loadSetting(const std::string& name, bool fromFileOnly);
/// loadSetting(name, true).
FOKRAZO_API std::string loadSettingFromFile(const std::string& name);

/// Reads one file, without using or changing the values in memory. An empty `dir` means the data directory;
/// any other ends in "/". Never follows a symbolic link or waits for a writer. A file of more than 1 MiB is
/// always refused. In the data directory's "user/", root reads only its own files.
/// @throws BadDataException a control character other than newline
FOKRAZO_API std::string readSettingFile(const std::string& name, const std::string& dir);
/// Writes one file, without changing the values in memory; an empty value removes the file. `dir` and the
/// limit of 1 MiB are as in readSettingFile. White space around the value is not written. After an exception
/// the old file is unchanged.
FOKRAZO_API void writeSettingFile(const std::string& name, const std::string& value, SettingAccess access,
                                  const std::string& dir);
/// Sets a setting in memory and in its file; an empty value removes the file. Does nothing if the value is
/// unchanged, unless `force`. Without root rights only names that begin with "dc." are written to a file, the
/// one in "user/". With `deferOnFailure` a failed write to /var/velmora/ counts as success, and later calls
/// try it again.
FOKRAZO_API void saveSetting(const std::string& name, const std::string& value, SettingAccess access,
                             bool deferOnFailure, bool force);
/// Retries deferred writes. The first call of a process also removes the temporary files of killed writers.
/// Returns the number of writes still deferred.
FOKRAZO_API int rewriteSettingFiles();
/// Removes the temporary files of killed writers, as far as permissions allow; those of live writers stay.
/// @throws NotFoundException `dir` cannot be listed
FOKRAZO_API void CleanTempSettingFiles(const std::string& dir);

/// Whether the data directory has a file for the setting.
FOKRAZO_API bool SettingExists(const std::string& name);
/// The file's modification time, in seconds since the epoch; 0 if there is no file.
FOKRAZO_API time_t SettingModTime(const std::string& name);
/// Clears the values in memory: the next calls read the files again.
FOKRAZO_API void clearSettingsMap();
/// Throws for a `size` of more than 1024 bytes, unless the name is "trusts" or begins with "dc.". `operation`
/// is the first word of the message.
FOKRAZO_API void CheckFileSize(const char* operation, const std::string& name, long long size);

/// Whether this machine is joined to a domain and no join is under way. Never throws for missing settings.
FOKRAZO_API bool joined();
/// @throws IOException the settings of a joined machine are incomplete
FOKRAZO_API void CheckEssentialKSets();

}  // namespace vesk
