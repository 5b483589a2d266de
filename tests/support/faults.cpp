#include "tests/support/faults.h"

#include <dirent.h>
#include <lber.h>
#include <sys/file.h>
#include <sys/statvfs.h>
#include <zlib.h>

namespace {

using testsupport::Call;
using testsupport::Fault;

struct Plan {
  Call call = Call::Count;
  unsigned left = 0;  // calls until the one that fails, inclusive; 0 once it has failed
  int error = 0;
  bool lasting = false;
  bool struck = false;
};
thread_local Plan gPlan;

// Counts a call. Returns whether it must fail, and sets errno then.
bool fails(Call call) {
  Plan& plan = gPlan;
  if (plan.call != call) return false;
  if (plan.left == 0 ? !plan.lasting : --plan.left > 0) return false;
  plan.struck = true;
  if (plan.error == Fault::kShort) return false;
  errno = plan.error;
  return true;
}

// How many bytes a transfer may move.
size_t share(Call call, size_t size) {
  const bool isShort = gPlan.call == call && gPlan.struck && gPlan.left == 0 && gPlan.error == Fault::kShort;
  return isShort && size > 1 ? 1 : size;
}

}  // namespace

// A call that either fails or does its work.
#define FOKRAZO_FAULTY(kind, failure, Result, name, parameters, arguments) \
  extern "C" Result __real_##name parameters;                              \
  extern "C" Result __wrap_##name parameters {                             \
    return fails(Call::kind) ? failure : __real_##name arguments;          \
  }

// clang-format off
FOKRAZO_FAULTY(Allocate, nullptr, void*, malloc, (size_t size), (size))
FOKRAZO_FAULTY(Allocate, nullptr, void*, calloc, (size_t count, size_t size), (count, size))
FOKRAZO_FAULTY(Allocate, nullptr, char*, strdup, (const char* text), (text))
FOKRAZO_FAULTY(Allocate, nullptr, void*, ber_memalloc, (ber_len_t size), (size))
FOKRAZO_FAULTY(Allocate, nullptr, void*, ber_memcalloc, (ber_len_t count, ber_len_t size), (count, size))
FOKRAZO_FAULTY(Allocate, nullptr, BerElement*, ber_alloc_t, (int options), (options))
FOKRAZO_FAULTY(Open, -1, int, mkstemp, (char* name), (name))
FOKRAZO_FAULTY(Open, -1, int, mkostemp, (char* name, int flags), (name, flags))
FOKRAZO_FAULTY(Open, -1, int, socket, (int domain, int type, int protocol), (domain, type, protocol))
FOKRAZO_FAULTY(Open, nullptr, FILE*, fopen, (const char* path, const char* mode), (path, mode))
FOKRAZO_FAULTY(Open, nullptr, FILE*, fdopen, (int fd, const char* mode), (fd, mode))
FOKRAZO_FAULTY(Open, nullptr, FILE*, popen, (const char* command, const char* mode), (command, mode))
FOKRAZO_FAULTY(Open, nullptr, DIR*, opendir, (const char* path), (path))
FOKRAZO_FAULTY(Open, nullptr, DIR*, fdopendir, (int fd), (fd))
FOKRAZO_FAULTY(Open, nullptr, gzFile, gzopen, (const char* path, const char* mode), (path, mode))
FOKRAZO_FAULTY(Open, nullptr, gzFile, gzdopen, (int fd, const char* mode), (fd, mode))
FOKRAZO_FAULTY(Open, -1, int, connect, (int fd, const sockaddr* address, socklen_t size), (fd, address, size))
FOKRAZO_FAULTY(Open, -1, int, fork, (), ())
FOKRAZO_FAULTY(Read, -1, ssize_t, read, (int fd, void* buffer, size_t size), (fd, buffer, share(Call::Read, size)))
FOKRAZO_FAULTY(Read, 0, size_t, fread, (void* buffer, size_t size, size_t count, FILE* file), (buffer, size, share(Call::Read, count), file))
FOKRAZO_FAULTY(Read, -1, int, gzread, (gzFile file, void* buffer, unsigned size), (file, buffer, size))
FOKRAZO_FAULTY(Write, -1, ssize_t, write, (int fd, const void* buffer, size_t size), (fd, buffer, share(Call::Write, size)))
FOKRAZO_FAULTY(Write, 0, size_t, fwrite, (const void* buffer, size_t size, size_t count, FILE* file), (buffer, size, share(Call::Write, count), file))
FOKRAZO_FAULTY(Write, EOF, int, fflush, (FILE* file), (file))
FOKRAZO_FAULTY(Write, 0, int, gzwrite, (gzFile file, const void* buffer, unsigned size), (file, buffer, size))
FOKRAZO_FAULTY(Inspect, nullptr, dirent*, readdir, (DIR* directory), (directory))
FOKRAZO_FAULTY(Inspect, -1, ssize_t, readlink, (const char* path, char* buffer, size_t size), (path, buffer, size))
FOKRAZO_FAULTY(Inspect, -1, int, stat, (const char* path, struct stat* info), (path, info))
FOKRAZO_FAULTY(Inspect, -1, int, lstat, (const char* path, struct stat* info), (path, info))
FOKRAZO_FAULTY(Inspect, -1, int, fstat, (int fd, struct stat* info), (fd, info))
FOKRAZO_FAULTY(Inspect, -1, int, fstatat, (int fd, const char* path, struct stat* info, int flags), (fd, path, info, flags))
FOKRAZO_FAULTY(Inspect, -1, int, access, (const char* path, int mode), (path, mode))
FOKRAZO_FAULTY(Inspect, -1, int, statvfs64, (const char* path, struct statvfs64* info), (path, info))
FOKRAZO_FAULTY(Inspect, -1, int, getsockopt, (int fd, int level, int name, void* value, socklen_t* size), (fd, level, name, value, size))
FOKRAZO_FAULTY(Change, -1, int, rename, (const char* from, const char* to), (from, to))
FOKRAZO_FAULTY(Change, -1, int, remove, (const char* path), (path))
FOKRAZO_FAULTY(Change, -1, int, unlink, (const char* path), (path))
FOKRAZO_FAULTY(Change, -1, int, unlinkat, (int fd, const char* path, int flags), (fd, path, flags))
FOKRAZO_FAULTY(Change, -1, int, mkdirat, (int fd, const char* path, mode_t mode), (fd, path, mode))
FOKRAZO_FAULTY(Change, -1, int, renameat, (int from, const char* old, int to, const char* name), (from, old, to, name))
FOKRAZO_FAULTY(Change, -1, int, renameat2, (int from, const char* old, int to, const char* name, unsigned flags), (from, old, to, name, flags))
FOKRAZO_FAULTY(Change, -1, int, chmod, (const char* path, mode_t mode), (path, mode))
FOKRAZO_FAULTY(Change, -1, int, fchmod, (int fd, mode_t mode), (fd, mode))
FOKRAZO_FAULTY(Change, -1, int, fchmodat, (int fd, const char* path, mode_t mode, int flags), (fd, path, mode, flags))
FOKRAZO_FAULTY(Change, -1, int, fchown, (int fd, uid_t uid, gid_t gid), (fd, uid, gid))
FOKRAZO_FAULTY(Change, -1, int, fchownat, (int fd, const char* path, uid_t uid, gid_t gid, int flags), (fd, path, uid, gid, flags))
FOKRAZO_FAULTY(Change, -1, int, ftruncate, (int fd, off_t size), (fd, size))
FOKRAZO_FAULTY(Change, -1, int, fsync, (int fd), (fd))
FOKRAZO_FAULTY(Change, -1, int, flock, (int fd, int operation), (fd, operation))
FOKRAZO_FAULTY(Wait, -1, pid_t, waitpid, (pid_t pid, int* status, int options), (pid, status, options))
FOKRAZO_FAULTY(Wait, -1, int, poll, (pollfd* entries, nfds_t count, int timeout), (entries, count, timeout))
// Variadic functions, called with their one optional argument.
FOKRAZO_FAULTY(Open, -1, int, open, (const char* path, int flags, mode_t mode), (path, flags, mode))
FOKRAZO_FAULTY(Open, -1, int, openat, (int fd, const char* path, int flags, mode_t mode), (fd, path, flags, mode))
FOKRAZO_FAULTY(Change, -1, int, fcntl, (int fd, int operation, void* argument), (fd, operation, argument))
// clang-format on

extern "C" {

int __real_close(int fd);
int __wrap_close(int fd) {
  const bool failed = fails(Call::Close);
  const int error = errno;
  const int rc = __real_close(fd);
  if (!failed) return rc;
  errno = error;
  return -1;
}

int __real_fclose(FILE* file);
int __wrap_fclose(FILE* file) {
  const bool failed = fails(Call::Close);
  const int rc = __real_fclose(file);
  return failed ? EOF : rc;
}

ssize_t __real_recvmsg(int fd, msghdr* message, int flags);
ssize_t __wrap_recvmsg(int fd, msghdr* message, int flags) {
  if (fails(Call::Read)) return -1;
  message->msg_iov->iov_len = share(Call::Read, message->msg_iov->iov_len);
  return __real_recvmsg(fd, message, flags);
}

ssize_t __real_sendmsg(int fd, const msghdr* message, int flags);
ssize_t __wrap_sendmsg(int fd, const msghdr* message, int flags) {
  if (fails(Call::Write)) return -1;
  iovec bytes = *message->msg_iov;
  bytes.iov_len = share(Call::Write, bytes.iov_len);
  msghdr part = *message;
  part.msg_iov = &bytes;
  return __real_sendmsg(fd, &part, flags);
}

}  // extern "C"

// A sanitizer brings its own array versions, with matching deletes.
void* operator new(size_t size) {
  void* memory = __wrap_malloc(size ? size : 1);
  if (!memory) throw std::bad_alloc();
  return memory;
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
  return __wrap_malloc(size ? size : 1);
}
void operator delete(void* memory) noexcept {
  free(memory);
}
void operator delete(void* memory, size_t) noexcept {
  free(memory);
}

namespace {

constexpr suseconds_t kInterval = 100;  // microseconds
std::atomic<unsigned long> gInterruptions{0};

void setTimer(suseconds_t interval) {
  const itimerval timer = {{0, interval}, {0, interval}};
  setitimer(ITIMER_REAL, &timer, nullptr);
}

}  // namespace

namespace testsupport {

Fault::Fault(Call call, unsigned nth, int error, bool lasting) {
  gPlan = {call, nth, error, lasting, false};
}

Fault::~Fault() {
  gPlan.call = Call::Count;
}

bool Fault::struck() {
  return gPlan.struck;
}

Interruptions::Interruptions() {
  struct sigaction action = {};
  action.sa_handler = [](int) { ++gInterruptions; };
  sigaction(SIGALRM, &action, nullptr);
  setTimer(kInterval);
}

Interruptions::~Interruptions() {
  setTimer(0);
  signal(SIGALRM, SIG_DFL);
}

unsigned long Interruptions::count() {
  return gInterruptions;
}

std::string nameOf(Call call) {
  static constexpr const char* kNames[] = {"allocate", "open",    "close",  "read",
                                           "write",    "inspect", "change", "wait"};
  return kNames[static_cast<int>(call)];
}

}  // namespace testsupport
