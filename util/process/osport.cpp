#include <fokrazo/osport.h>

#include <signal.h>
#include <sys/fsuid.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include <fokrazo/mutex.h>
#include "util/thread/fork_locks.h"

// From the C library. NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" const char* __progname;

namespace {

// There is no call to read the id, but setting it returns the old one.
uid_t readFsId(uid_t effective, int (*set)(uid_t)) {
  const uid_t before = set(effective);
  if (before != effective) set(before);
  return before;
}

// The program's name in the process table, between the first "(" and the next ")"; null if missing.
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
  vesk::Lock lock(vesk::forkedLock(vesk::ForkOrder::ProgramName));
  if (__progname && *__progname) return;
  const char* name = nameFromProcessTable();
  __progname = name ? name : "unknown";
}
