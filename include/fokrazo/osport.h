/// A thin layer over the operating system: running programs, file locks that say who holds them, and small
/// portability wrappers.
///
/// The library also puts thread-safe functions `random`, `rand`, `srandom` and `srand` in the place of the
/// system's, under these very names; <stdlib.h> declares them. They draw from lrand48. The first number drawn
/// seeds the generator from the clock, so that only a seed given after it holds.
#pragma once

#include <sys/types.h>

#include <ctime>

#include <fokrazo/export.h>

/// Runs `path` with `argv`, which ends in a null pointer. `mode`:
///   0  runs and waits. Gives the child's wait status, or -1 with errno.
///   1  runs and does not wait. Gives the child's process id, or -1 with errno; spawnfv_reap collects it.
///   2  becomes the program, with no child. Returns only if `path` is no program, with -1.
/// `fds` holds `count` descriptors of the caller: entry i becomes descriptor i of the program, a negative
/// entry leaves i closed, and all other descriptors are closed. With `count` 0 the program keeps all.
/// Returns -1 with errno if `path` cannot be executed; a program that fails to start ends with the negated
/// errno as its exit status.
/// Thread-safe: programs start one at a time. The child of a threaded process does nothing that could block.
FOKRAZO_API int spawnfv(int mode, int count, int* fds, const char* path, char** argv);
/// As spawnfv. In mode 0 it waits `timeout` seconds at most (-1: without limit) and then gives -1 with
/// ETIMEDOUT; the child gets SIGTERM if `kill`, runs on otherwise, and is left to spawnfv_reap.
FOKRAZO_API int spawnfv_time(int mode, int count, int* fds, const char* path, char** argv, int timeout,
                             bool kill, bool emptyEnvironment);
/// As spawnfv_time. Calls `callback`, which may be null, last before the program starts, in the child;
/// it does only what is safe in a signal handler and throws nothing.
FOKRAZO_API int spawnfv_time_with_callback(int mode, int count, int* fds, const char* path, char** argv,
                                           int timeout, bool kill, bool emptyEnvironment, void (*callback)());
/// Collects the children that were not waited for and have ended. Never blocks. Thread-safe.
FOKRAZO_API void spawnfv_reap();

/// Takes a write lock on the whole file. 0 if it is held now, else the process id of the holder, or -1 if
/// that cannot be told or locking failed. A lock belongs to the process and ends with any close of the file.
FOKRAZO_API int QtrLock(int fd);
/// Gives the lock back. 0, or -1.
FOKRAZO_API int QtrUnlock(int fd);
/// Opens the lock file, made if missing, with `mode` unless that is 0, and locks it; `*status` is then as
/// from QtrLock(fd). Whatever stands in the place of a regular file (a link, a device) is removed first,
/// never followed. Gives the descriptor, which the caller closes, also where another holds the lock; -1 with
/// `*status` -1 if there is no file to be had.
FOKRAZO_API int QtrLock(const char* path, int* status, unsigned mode);
FOKRAZO_API int QtrLock(const char* path, int* status);

/// The ids that file access goes by. The setters give the id before.
FOKRAZO_API uid_t QtrSetFsUid(uid_t uid);
FOKRAZO_API gid_t QtrSetFsGid(gid_t gid);
FOKRAZO_API uid_t QtrGetFsUid();
FOKRAZO_API gid_t QtrGetFsGid();

/// ctime_r. `buffer` has room for 26 bytes, whatever `size` says.
FOKRAZO_API char* QtrCTime_r(const time_t* time, char* buffer, int size);
/// Sets the handler of a signal and gives the handler before, or SIG_ERR.
FOKRAZO_API void (*ConfigSignalHandler(int signal, void (*handler)(int)))(int);
/// False: this is no such system.
FOKRAZO_API bool IsSolarisZone();
/// Sees to it that libc's __progname names the program: from the process table if it is empty, "unknown" if
/// that has no name either. Thread-safe.
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
