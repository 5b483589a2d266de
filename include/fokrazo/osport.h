/// A thin layer over the operating system: running programs, file locks that name their holder, and small
/// portability wrappers.
///
/// The library also replaces the system's `random`, `rand`, `srandom` and `srand` by thread-safe functions of
/// the same names, which <stdlib.h> declares. They draw from lrand48. The first number drawn seeds the
/// generator from the clock, so only a seed set after that has an effect.
#pragma once

#include <sys/types.h>

#include <ctime>

#include <fokrazo/export.h>

/// Runs `path` with `argv`, which ends in a null pointer. `mode`:
///   0  runs it and waits. Returns the child's wait status, or -1 with errno.
///   1  runs it and does not wait. Returns the child's process id, or -1 with errno; spawnfv_reap collects
///   it. 2  replaces the calling process. Returns -1 if `path` is not executable, and otherwise not at all.
/// `fds` holds `count` descriptors of the caller: entry i becomes descriptor i of the program, a negative
/// entry leaves i closed, and all other descriptors are closed. With `count` 0 the program keeps all that are
/// open. Returns -1 with errno if `path` is not executable. A program that fails to start ends with the
/// negated errno as its exit status. Thread-safe: programs start one at a time. The child of a threaded
/// process does nothing that could block.
FOKRAZO_API int spawnfv(int mode, int count, int* fds, const char* path, char** argv);
/// As spawnfv, but mode 0 waits at most `timeout` seconds (-1: without limit) and then returns -1 with
/// ETIMEDOUT. The child then gets SIGTERM if `kill` is true and runs on if not; spawnfv_reap collects it.
/// With `emptyEnvironment` the program's environment is empty.
FOKRAZO_API int spawnfv_time(int mode, int count, int* fds, const char* path, char** argv, int timeout,
                             bool kill, bool emptyEnvironment);
/// As spawnfv_time. The child calls `callback`, unless it is null, right before the program starts. It may
/// only do what is safe in a signal handler, and must not throw.
FOKRAZO_API int spawnfv_time_with_callback(int mode, int count, int* fds, const char* path, char** argv,
                                           int timeout, bool kill, bool emptyEnvironment, void (*callback)());
/// Collects children that have ended and that no call waits for. Never blocks. Thread-safe.
FOKRAZO_API void spawnfv_reap();

/// Takes a write lock on the whole file, without waiting. Returns 0 if this process holds it now, the process
/// id of the holder if another process does, and -1 if locking fails or the holder is unknown. A lock belongs
/// to the process and ends as soon as any of its descriptors of that file is closed.
FOKRAZO_API int QtrLock(int fd);
/// Releases the lock. Returns 0, or -1.
FOKRAZO_API int QtrUnlock(int fd);
/// Opens a lock file, which is made if it is missing, sets its mode unless `mode` is 0, and locks it. Returns
/// the descriptor, which is close-on-exec and the caller's to close, and sets `*status` to the result of
/// QtrLock(fd): the descriptor is returned even if another process holds the lock. A link, a device or
/// anything else in the file's place is removed, never followed. Returns -1, with `*status` -1, if there is
/// no file to open or make.
FOKRAZO_API int QtrLock(const char* path, int* status, unsigned mode);
FOKRAZO_API int QtrLock(const char* path, int* status);

/// The user and group id by which the system checks access to files. The setters return the id of before.
FOKRAZO_API uid_t QtrSetFsUid(uid_t uid);
FOKRAZO_API gid_t QtrSetFsGid(gid_t gid);
FOKRAZO_API uid_t QtrGetFsUid();
FOKRAZO_API gid_t QtrGetFsGid();

/// ctime_r. `buffer` has room for 26 bytes, whatever `size` says.
FOKRAZO_API char* QtrCTime_r(const time_t* time, char* buffer, int size);
/// Sets the handler of a signal. Returns the handler of before, or SIG_ERR.
FOKRAZO_API void (*ConfigSignalHandler(int signal, void (*handler)(int)))(int);
/// Always false on this system.
FOKRAZO_API bool IsSolarisZone();
/// Sets libc's __progname if it is empty: to the name in the process table, or to "unknown". Thread-safe.
FOKRAZO_API void detect_progname();

namespace vesk {

/// Permissions of files that are the owner's alone.
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
