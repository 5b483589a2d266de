/// What the daemon and the tools ask about this host: its platform, its names, who is logged in, and whether
/// a TCP endpoint answers. Log channel "base.osutil". All but the adapter of the login records may be called
/// from any thread.
#pragma once

#include <list>
#include <string>

#include <fokrazo/export.h>

// From <netinet/in.h> and <utmpx.h>, which a program includes that uses them: their macros have names such as
// EMPTY.
struct sockaddr_in;
struct utmpx;

/// Tests whether a TCP endpoint takes connections. Blocks for at most 10 seconds.
/// Returns 0 if it does, -1 if nothing answers in time, and 1 otherwise.
FOKRAZO_API int TestConnect(sockaddr_in& address);

/// The login records, through utmpx or the older utmp, whichever the system has; the first call decides. They
/// work as the system's calls of similar names. Every record of the older interface is shown as a user's
/// process. The record is valid until the next call. Not thread-safe.
FOKRAZO_API void internal_setutxent();
FOKRAZO_API utmpx* internal_getutxent();
FOKRAZO_API void internal_endutxent();

/// The day's clock in seconds.
FOKRAZO_API int timeInSeconds();

/// This host's name by the operating system, without its domain, in lower case; empty if it has none.
FOKRAZO_API std::string shortLocalHostName();
/// This host's name as the resolver completes it, in lower case. Blocks for the resolver.
FOKRAZO_API std::string longLocalHostName();
/// The name by which this host was joined, up to the first dot or whole, in lower case.
/// @throws IOException the host is not joined
FOKRAZO_API std::string shortJoinedHostName();
FOKRAZO_API std::string longJoinedHostName();
/// The name in the style before Windows 2000: of the setting, or else the short joined name, which root then
/// stores.
/// @throws IOException the host is not joined
FOKRAZO_API std::string PreW2KHostName();
/// The account name of this host: PreW2KHostName and "$", in lower case.
FOKRAZO_API std::string SamHostName();

/// The name and version of the Linux distribution: from /etc/os-release or /usr/lib/os-release, else from
/// /usr/bin/lsb_release (run with an empty environment, for 10 seconds at most), else from the release files
/// in /etc. Returns true if it found both; the outputs are set only then.
/// @throws std::out_of_range a line of lsb_release or of a release file is too short for its kind
FOKRAZO_API bool linuxDistro(std::string& os, std::string& version);
/// The name and version of this operating system: from linuxDistro, or else from the kernel.
/// @throws std::out_of_range as linuxDistro
FOKRAZO_API void OSVersion(std::string& os, std::string& version);

/// Bits of `flags`.
enum CurrentUsersFlag {
  CURRENT_USERS_SORTED = 1,        ///< in order, each name once
  CURRENT_USERS_CONSOLE_ONLY = 2,  ///< on Mac OS X 10.4, those on the console alone
};

/// The names of the users logged in now, once for each session. The bits of `flags` are above.
/// @throws std::out_of_range as OSVersion
FOKRAZO_API std::list<std::string> currentUsers(int flags);
/// With `sorted`, in order and each name once. @throws std::out_of_range as OSVersion
FOKRAZO_API std::list<std::string> currentUsers(bool sorted);
/// How many sessions that user has. @throws std::out_of_range as OSVersion
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
