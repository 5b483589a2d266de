/// All output to syslog goes through here. Internal.
#pragma once

namespace vesk {

/// openlog with the program's name and its process id, for the facility "auth"; once.
void openSyslog();
/// closelog.
void closeSyslog();
/// Sends one line, which must be safe to write. `priority` is facility and priority together; without a
/// facility it is the one that openlog has set. Waits for syslog as the C library does.
void writeSyslog(int priority, const char* text);

/// For the child of a fork, see inForkedChild. The C library's own lock may have been held by a thread that
/// the child does not have; then the child sends its lines itself.
void syslogInChild(bool intact);

}  // namespace vesk
