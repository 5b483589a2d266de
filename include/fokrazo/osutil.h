/// Information about this host: platform, names, logged-in users, and whether a TCP endpoint answers. Log
/// channel "base.osutil". Thread-safe, except the login records.
#pragma once

#include <list>
#include <string>

#include <fokrazo/export.h>

// Include <netinet/in.h> or <utmpx.h> to use these; they are not included here because of macros such as
// EMPTY.
struct sockaddr_in;
struct utmpx;

/// Tests whether a TCP endpoint takes connections. Blocks for at most 10 seconds.
/// Returns 0 if it does, -1 if nothing answers in time, and 1 otherwise.
FOKRAZO_API int TestConnect(sockaddr_in& address);

/// The login records, from utmpx or the older utmp, whichever the system has; the first call decides. They
/// work like the system calls of similar names. Records of the older interface are returned as user
/// processes. A record is valid until the next call. Not thread-safe.
FOKRAZO_API void internal_setutxent();
FOKRAZO_API utmpx* internal_getutxent();
FOKRAZO_API void internal_endutxent();

/// Seconds since the epoch.
FOKRAZO_API int timeInSeconds();

/// The operating system's name of this host, without the domain, in lower case; empty if it has none.
FOKRAZO_API std::string shortLocalHostName();
/// The canonical name that the resolver returns for this host, in lower case. Waits for the resolver.
FOKRAZO_API std::string longLocalHostName();
/// The name under which this host was joined, up to the first dot or in full, in lower case.
/// @throws IOException the host is not joined
FOKRAZO_API std::string shortJoinedHostName();
FOKRAZO_API std::string longJoinedHostName();
/// The pre-Windows 2000 name: the setting, or else the short joined name, which is then stored if the caller
/// is root.
/// @throws IOException the host is not joined
FOKRAZO_API std::string PreW2KHostName();
/// The account name of this host: PreW2KHostName + "$", in lower case.
FOKRAZO_API std::string SamHostName();

/// The name and version of the Linux distribution: from /etc/os-release or /usr/lib/os-release, else from
/// /usr/bin/lsb_release (run with an empty environment for at most 10 seconds), else from the release files
/// in /etc. Returns true if it found both; the outputs are set only then.
/// @throws std::out_of_range a line of lsb_release or of a release file is too short for its kind
FOKRAZO_API bool linuxDistro(std::string& os, std::string& version);
/// The name and version of this operating system: from linuxDistro, or else from the kernel.
/// @throws std::out_of_range as linuxDistro
FOKRAZO_API void OSVersion(std::string& os, std::string& version);

/// Bits of `flags`.
enum CurrentUsersFlag {
  CURRENT_USERS_SORTED = 1,        ///< sorted, each name once
  CURRENT_USERS_CONSOLE_ONLY = 2,  ///< on Mac OS X 10.4, only users on the console
};

/// The names of the logged-in users, one entry per session. `flags` are bits of CurrentUsersFlag.
/// @throws std::out_of_range as OSVersion
FOKRAZO_API std::list<std::string> currentUsers(int flags);
/// With `sorted`, sorted and each name once. @throws std::out_of_range as OSVersion
FOKRAZO_API std::list<std::string> currentUsers(bool sorted);
/// The number of sessions of `user`. @throws std::out_of_range as OSVersion
FOKRAZO_API int CurrentLogons(std::string user);

namespace vesk {

using ::CurrentLogons;
using ::currentUsers;
using ::internal_endutxent;
using ::internal_getutxent;
using ::internal_setutxent;
using ::linuxDistro;
using ::longJoinedHostName;
using ::longLocalHostName;
using ::OSVersion;
using ::PreW2KHostName;
using ::SamHostName;
using ::shortJoinedHostName;
using ::shortLocalHostName;
using ::TestConnect;
using ::timeInSeconds;

}  // namespace vesk
