/// The paths that all programs of the family share. They cannot be configured: a library that runs inside
/// logins takes no path from its environment.
#pragma once

namespace vesk {
namespace paths {

/// The configuration file.
constexpr char kConfigFile[] = "/etc/velmora/velmora.conf";
/// The host's settings; those of its users are below it.
constexpr char kDataDir[] = "/var/velmora/";
/// The daemon's socket.
constexpr char kDaemonSocket[] = "/var/velmora/daemon";
/// Where ADObjAssert looks for text to log.
constexpr char kAssertFile[] = "/var/velmora/adobject.txt";
/// Exists while the host is joining a domain. Every program of the family spells it with the double slash.
constexpr char kJoinInProgressFile[] = "/var/velmora//QTR_KAMBREL_IN_PROGRESS";
/// The log file, if the configuration does not name one.
constexpr char kLogFile[] = "/var/log/velmora.log";
/// Root's temporary files.
constexpr char kRootTempDir[] = "/var/zantrel/tmp";

/// Below a data directory: the files of processes without root rights.
constexpr char kUserDir[] = "user/";
/// The prefix of key set file names.
constexpr char kKSetPrefix[] = "kset.";
/// Part of the names of their temporary files.
constexpr char kKSetTemporary[] = ".KSET.TEMP";

}  // namespace paths
}  // namespace vesk
