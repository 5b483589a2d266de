/// All output to syslog. Internal.
#pragma once

namespace vesk {

/// openlog with the program's name and its process id, for the facility "auth"; once.
void openSyslog();
/// closelog.
void closeSyslog();
/// Sends one escaped line. `priority` is facility and priority together; without a facility the one from
/// openlog is used. Waits for syslog as the C library does.
void writeSyslog(int priority, const char* text);

/// For the child of a fork, see inForkedChild. The C library's lock may be held by a thread that the child
/// does not have; then the child sends its lines itself.
void syslogInChild(bool intact);

}  // namespace vesk
