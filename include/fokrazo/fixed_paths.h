/// The paths that all programs of the family share. They cannot be configured: a library that runs inside
/// logins takes no path from its environment.
#pragma once

namespace vesk {
namespace paths {

/// The configuration file.
constexpr char kConfigFile[] = "/etc/velmora/velmora.conf";
/// The settings of the host, and of its users below it.
constexpr char kDataDir[] = "/var/velmora/";
/// The daemon's socket.
constexpr char kDaemonSocket[] = "/var/velmora/daemon";
/// Where ADObjAssert looks for text to log.
constexpr char kAssertFile[] = "/var/velmora/adobject.txt";
/// There while the host is joining a domain. The double slash is the name that every program of the family
/// uses.
constexpr char kJoinInProgressFile[] = "/var/velmora//QTR_KAMBREL_IN_PROGRESS";
/// The log file, where the configuration asks for one without naming it.
constexpr char kLogFile[] = "/var/log/velmora.log";
/// Root's temporary files.
constexpr char kRootTempDir[] = "/var/zantrel/tmp";

/// Below a data directory: what belongs to processes without root rights.
constexpr char kUserDir[] = "user/";
/// What the file names of key sets begin with.
constexpr char kKSetPrefix[] = "kset.";
/// What the names of their temporary files contain.
constexpr char kKSetTemporary[] = ".KSET.TEMP";

}  // namespace paths
}  // namespace vesk
