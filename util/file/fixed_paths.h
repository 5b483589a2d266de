/// The paths that the family agrees on. They are no configuration: a library inside logins takes no path from
/// its environment.
#pragma once

namespace vesk {
namespace paths {

constexpr char kConfigFile[] = "/etc/velmora/velmora.conf";
constexpr char kDataDir[] = "/var/velmora/";
constexpr char kDaemonSocket[] = "/var/velmora/daemon";
constexpr char kAssertFile[] = "/var/velmora/adobject.txt";
/// The double slash is the name that every program of the family uses.
constexpr char kJoinInProgressFile[] = "/var/velmora//QTR_KAMBREL_IN_PROGRESS";
constexpr char kLogFile[] = "/var/log/velmora.log";
constexpr char kRootTempDir[] = "/var/zantrel/tmp";

}  // namespace paths
}  // namespace vesk
