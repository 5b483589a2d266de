/// A thin layer over the operating system: running programs, file locks that name their holder, and small
/// portability wrappers.
///
/// The library also replaces the C library's `random`, `rand`, `srandom` and `srand` with thread-safe
/// functions, declared in <stdlib.h>, that use lrand48. The first number drawn seeds the generator from the
/// clock, so only a seed set after that has an effect.
#pragma once

#include <sys/types.h>

#include <ctime>

#include <fokrazo/export.h>

/// Runs `path` with `argv`, which ends in a null pointer. `mode`:
///   0  runs it and waits. Returns the child's wait status, or -1 with errno.
///   1  runs it and does not wait. Returns the child's process id, or -1 with errno; spawnfv_reap reaps it.
///   2  replaces the calling process. Returns -1 if `path` is not executable, and otherwise not at all.
/// `fds` holds `count` descriptors of the caller: entry i becomes descriptor i of the program; a negative
/// entry leaves i closed. All other descriptors are closed. With `count` 0 the program inherits all open
/// descriptors. Returns -1 with errno if `path` is not executable. A program that fails to start ends with
/// the negated errno as its exit status. Thread-safe: programs start one at a time. In a threaded process the
/// child calls only async-signal-safe functions.
FOKRAZO_API int spawnfv(int mode, int count, int* fds, const char* path, char** argv);
/// As spawnfv, but mode 0 waits at most `timeout` seconds (-1: without limit) and then returns -1 with
/// ETIMEDOUT. The child then gets SIGTERM if `kill` is true, and otherwise continues; reap it with
/// spawnfv_reap. With `emptyEnvironment` the program's environment is empty.
FOKRAZO_API int spawnfv_time(int mode, int count, int* fds, const char* path, char** argv, int timeout,
                             bool kill, bool emptyEnvironment);
/// As spawnfv_time. The child calls `callback`, unless it is null, right before the program starts.
/// `callback` must be async-signal-safe and must not throw.
FOKRAZO_API int spawnfv_time_with_callback(int mode, int count, int* fds, const char* path, char** argv,
                                           int timeout, bool kill, bool emptyEnvironment, void (*callback)());
/// Reaps children of these functions that have ended and that no call waits for. Never blocks. Thread-safe.
FOKRAZO_API void spawnfv_reap();

/// Takes a write lock on the whole file, without waiting. Returns 0 if this process holds it now, the process
/// id of the holder if another process does, and -1 if locking fails or the holder is unknown. The lock
/// belongs to the process, which loses it when it closes any descriptor of that file.
FOKRAZO_API int QtrLock(int fd);
/// Releases the lock. Returns 0, or -1.
FOKRAZO_API int QtrUnlock(int fd);
/// Opens or creates a lock file, sets its mode unless `mode` is 0, and locks it. Returns a close-on-exec
/// descriptor that the caller closes, even if another process holds the lock; `*status` is the result of
/// QtrLock(fd). A link, a device or anything else in the file's place is removed, never followed. Returns -1,
/// with `*status` -1, if the file can be neither opened nor created.
FOKRAZO_API int QtrLock(const char* path, int* status, unsigned mode);
FOKRAZO_API int QtrLock(const char* path, int* status);

/// The user and group ids that the system checks for file access. The setters return the previous id.
FOKRAZO_API uid_t QtrSetFsUid(uid_t uid);
FOKRAZO_API gid_t QtrSetFsGid(gid_t gid);
FOKRAZO_API uid_t QtrGetFsUid();
FOKRAZO_API gid_t QtrGetFsGid();

/// ctime_r. `buffer` has room for 26 bytes, whatever `size` says.
FOKRAZO_API char* QtrCTime_r(const time_t* time, char* buffer, int size);
/// Sets the handler of a signal. Returns the previous handler, or SIG_ERR.
FOKRAZO_API void (*ConfigSignalHandler(int signal, void (*handler)(int)))(int);
/// Always false on this system.
FOKRAZO_API bool IsSolarisZone();
/// Sets libc's __progname if it is empty: to the process name, or to "unknown". Thread-safe.
FOKRAZO_API void detect_progname();

namespace vesk {

/// Permissions of files that only the owner may access.
constexpr mode_t DEFAULT_FILEMODE = 0700;

using ::ConfigSignalHandler;
using ::detect_progname;
using ::IsSolarisZone;
using ::QtrCTime_r;
using ::QtrGetFsGid;
using ::QtrGetFsUid;
using ::QtrLock;
using ::QtrSetFsGid;
using ::QtrSetFsUid;
using ::QtrUnlock;
using ::spawnfv;
using ::spawnfv_reap;
using ::spawnfv_time;
using ::spawnfv_time_with_callback;

}  // namespace vesk
