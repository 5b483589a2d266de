#include <fokrazo/osport.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/fsuid.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <fokrazo/mutex.h>
#include "util/thread/fork_locks.h"

// The C library's. NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" const char* __progname;

namespace {

// How often a lock is tried for that was free by the time its holder was asked for.
constexpr int kLockAttempts = 10;

struct flock wholeFile(short type) {
  struct flock lock {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  return lock;
}

int changeLock(int fd, short type) {
  for (int attempt = 0; attempt < kLockAttempts; ++attempt) {
    struct flock lock = wholeFile(type);
    if (fcntl(fd, F_SETLK, &lock) == 0) return 0;
    if (errno != EACCES && errno != EAGAIN) return -1;
    lock = wholeFile(type);
    if (fcntl(fd, F_GETLK, &lock) != 0) return -1;
    // A holder that this process cannot see has no id here, or one below 1.
    if (lock.l_type != F_UNLCK) return lock.l_pid > 0 ? lock.l_pid : -1;
  }
  return -1;
}

// -1 if there is no regular file at `path` and none can be made.
int openLockFile(const char* path) {
  if (!path) return -1;
  struct stat found;
  if (lstat(path, &found) == 0) {
    if (S_ISREG(found.st_mode)) return open(path, O_RDWR | O_NOFOLLOW);
    if (remove(path) != 0) return -1;
  }
  return open(path, O_RDWR | O_CREAT | O_EXCL, vesk::DEFAULT_FILEMODE);
}

// No call reads the id: setting it tells the one before.
uid_t readFsId(uid_t effective, int (*set)(uid_t)) {
  const uid_t before = set(effective);
  if (before != effective) set(before);
  return before;
}

// The program's name between the first "(" and the next ")" of the process table's line; null if there is
// none.
const char* nameFromProcessTable() {
  static char line[4096];
  FILE* table = fopen("/proc/self/stat", "re");
  if (!table) return nullptr;
  line[fread(line, 1, sizeof line - 1, table)] = '\0';
  fclose(table);
  char* name = strchr(line, '(');
  char* end = name ? strchr(name, ')') : nullptr;
  if (!end || end == name + 1) return nullptr;
  *end = '\0';
  return name + 1;
}

}  // namespace

int QtrLock(int fd) {
  return changeLock(fd, F_WRLCK);
}

int QtrUnlock(int fd) {
  return changeLock(fd, F_UNLCK);
}

int QtrLock(const char* path, int* status, unsigned mode) {
  *status = -1;
  const int fd = openLockFile(path);
  if (fd < 0) return -1;
  if (mode != 0) (void)fchmod(fd, mode);
  *status = QtrLock(fd);
  return fd;
}

int QtrLock(const char* path, int* status) {
  return QtrLock(path, status, 0);
}

uid_t QtrSetFsUid(uid_t uid) {
  return setfsuid(uid);
}

gid_t QtrSetFsGid(gid_t gid) {
  return setfsgid(gid);
}

uid_t QtrGetFsUid() {
  return readFsId(geteuid(), setfsuid);
}

gid_t QtrGetFsGid() {
  return readFsId(getegid(), setfsgid);
}

char* QtrCTime_r(const time_t* time, char* buffer, int) {
  return ctime_r(time, buffer);
}

void (*ConfigSignalHandler(int signal, void (*handler)(int)))(int) {
  struct sigaction action {};
  struct sigaction before {};
  action.sa_handler = handler;
  sigemptyset(&action.sa_mask);
  return sigaction(signal, &action, &before) == 0 ? before.sa_handler : SIG_ERR;
}

bool IsSolarisZone() {
  return false;
}

void detect_progname() {
  vesk::Lock lock(vesk::forkedLock<vesk::ForkOrder::ProgramName>());
  if (__progname && *__progname) return;
  const char* name = nameFromProcessTable();
  __progname = name ? name : "unknown";
}
