#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <vector>

#include <fokrazo/mutex.h>
#include <fokrazo/osport.h>
#include <fokrazo/thread_annotations.h>
#include "util/process/descriptors.h"
#include "util/text/made_once.h"
#include "util/thread/fork_locks.h"
#include "util/thread/mutex_internal.h"
#include "util/thread/pause.h"

namespace {

// The values of `mode`.
constexpr int kWait = 0;
constexpr int kDoNotWait = 1;
constexpr int kReplace = 2;

constexpr int kNoTimeout = -1;
constexpr long kPollInterval = 500;  // milliseconds: two polls per second

struct Child {
  pid_t pid;
  bool awaited;  // a caller waits for it, so spawnfv_reap ignores it
};

using Children = std::vector<Child>;

vesk::MadeOnce<Children> gSpawnPidList;

// Guards the list, so that no fork copies it half changed.
vesk::Mutex& gSpawnMutex() {
  vesk::inForkedChild(vesk::ForkOrder::SpawnedChildren, [](bool intact) {
    if (!intact) gSpawnPidList.abandon();
  });
  return vesk::forkedLock(vesk::ForkOrder::SpawnedChildren);
}

Children& spawnedChildren() FOKRAZO_REQUIRES(gSpawnMutex()) {
  return gSpawnPidList.get();
}

int maxfd() {
  return static_cast<int>(sysconf(_SC_OPEN_MAX));
}

bool hasEnded(int status) {
  return WIFEXITED(status) || WIFSIGNALED(status);
}

/// A program to run. Allocates all memory before the fork.
class Program {
 public:
  Program(int count, const int* fds, const char* path, char** argv, bool emptyEnvironment, void (*callback)())
      : m_fds(fds),
        m_count(std::max(count, 0)),
        m_path(path),
        m_argv(argv),
        m_emptyEnvironment(emptyEnvironment),
        m_callback(callback),
        m_scratch(m_count),
        m_limit(maxfd()) {
    std::copy_if(fds, fds + m_count, std::back_inserter(m_kept), [](int fd) { return fd >= 0; });
    std::sort(m_kept.begin(), m_kept.end());
    m_kept.erase(std::unique(m_kept.begin(), m_kept.end()), m_kept.end());
  }

  /// Executes the program, or exits with the negated errno.
  [[noreturn]] void exec() noexcept {
    if (m_count > 0) {
      vesk::descriptors::closeAllBut(m_kept.data(), m_kept.size(), m_limit);
      vesk::descriptors::arrange(m_fds, m_scratch.data(), m_count);
    }
    if (m_callback) m_callback();
    char* const noEnvironment[] = {nullptr};
    if (m_emptyEnvironment)
      execve(m_path, m_argv, noEnvironment);
    else
      execv(m_path, m_argv);
    _exit(-errno);
  }

 private:
  const int* m_fds;
  int m_count;
  const char* m_path;
  char** m_argv;
  bool m_emptyEnvironment;
  void (*m_callback)();
  std::vector<int> m_scratch;
  std::vector<int> m_kept;
  int m_limit;
};

// Adds the child to the list and returns its process id, or -1 with errno. Cannot be cancelled: otherwise the
// child would never be reaped.
pid_t startChild(Program& program, bool awaited) {
  const vesk::BriefHold hold(gSpawnMutex());
  Children& children = spawnedChildren();
  children.reserve(children.size() + 1);
  const pid_t pid = fork();
  if (pid == 0) program.exec();
  if (pid > 0) children.push_back({pid, awaited});
  return pid;
}

/// A child that its caller waits for. After a time-out or a cancellation it is left to spawnfv_reap.
class AwaitedChild {
 public:
  explicit AwaitedChild(pid_t pid) : m_pid(pid) {}
  ~AwaitedChild() noexcept(false) { giveUp(); }

  int wait() {
    int status = -1;
    while (waitpid(m_pid, &status, 0) < 0)
      if (errno != EINTR) return reapedElsewhere();
    forget();
    return status;
  }

  int waitFor(int timeout, bool kill) {
    for (long polls = 2L * timeout; polls > 0; --polls) {
      int status = -1;
      const pid_t changed = waitpid(m_pid, &status, WNOHANG | WUNTRACED);
      if (changed < 0 && errno != EINTR) return reapedElsewhere();
      if (changed > 0 && hasEnded(status)) {
        forget();
        return status;
      }
      vesk::pause::forMilliseconds(kPollInterval);
    }
    if (kill) ::kill(m_pid, SIGTERM);
    giveUp();
    errno = ETIMEDOUT;
    return -1;
  }

  AwaitedChild(const AwaitedChild&) = delete;
  AwaitedChild& operator=(const AwaitedChild&) = delete;

 private:
  // The child was reaped elsewhere.
  int reapedElsewhere() {
    const int error = errno;
    forget();
    errno = error;
    return -1;
  }

  // Its position in the list; the end if spawnfv_reap has removed it.
  Children::iterator find(Children& children) const {
    return std::find_if(children.begin(), children.end(),
                        [this](const Child& child) { return child.pid == m_pid; });
  }

  void forget() {
    m_done = true;
    vesk::Lock lock(gSpawnMutex());
    Children& children = spawnedChildren();
    const auto found = find(children);
    if (found != children.end()) children.erase(found);
  }

  void giveUp() {
    if (m_done) return;
    m_done = true;
    vesk::Lock lock(gSpawnMutex());
    Children& children = spawnedChildren();
    const auto found = find(children);
    if (found != children.end()) found->awaited = false;
  }

  pid_t m_pid;
  bool m_done = false;
};

// Also true for a process that is not a child of this one: it was reaped elsewhere, or a fork copied the
// list.
bool isGone(const Child& child) {
  if (child.awaited) return false;
  int status;
  const pid_t changed = waitpid(child.pid, &status, WNOHANG | WUNTRACED);
  return changed < 0 ? errno == ECHILD : changed > 0 && hasEnded(status);
}

}  // namespace

int spawnfv(int mode, int count, int* fds, const char* path, char** argv) {
  return spawnfv_time(mode, count, fds, path, argv, kNoTimeout, false, false);
}

int spawnfv_time(int mode, int count, int* fds, const char* path, char** argv, int timeout, bool kill,
                 bool emptyEnvironment) {
  return spawnfv_time_with_callback(mode, count, fds, path, argv, timeout, kill, emptyEnvironment, nullptr);
}

int spawnfv_time_with_callback(int mode, int count, int* fds, const char* path, char** argv, int timeout,
                               bool kill, bool emptyEnvironment, void (*callback)()) {
  if (!path || !argv || (count > 0 && !fds)) {
    errno = EFAULT;
    return -1;
  }
  if (const int refused = access(path, X_OK)) return refused;
  if (mode < kWait || mode > kReplace) {
    errno = EINVAL;
    return -1;
  }
  Program program(count, fds, path, argv, emptyEnvironment, callback);
  if (mode == kReplace) {
    vesk::Lock lock(gSpawnMutex());
    program.exec();
  }
  const pid_t pid = startChild(program, mode == kWait);
  if (pid < 0 || mode == kDoNotWait) return pid;
  AwaitedChild child(pid);
  return timeout == kNoTimeout ? child.wait() : child.waitFor(timeout, kill);
}

void spawnfv_reap() {
  vesk::Lock lock(gSpawnMutex());
  Children& children = spawnedChildren();
  children.erase(std::remove_if(children.begin(), children.end(), isGone), children.end());
}
