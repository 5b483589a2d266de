#include "util/sink/syslog_line.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <ctime>

#include <fokrazo/mutex.h>
#include "util/file/unique_fd.h"
#include "util/log/log_internal.h"
#include "util/sink/log_text.h"
#include "util/thread/calendar.h"
#include "util/thread/fork_locks.h"

namespace vesk {
namespace {

constexpr char kMonths[] = "JanFebMarAprMayJunJulAugSepOctNovDec";
constexpr int kMaxWait = 100;  // milliseconds; for a stalled syslog

// Held during each call of the C library's syslog functions, so that no fork interrupts one.
Mutex& gSyslogProtect() {
  return forkedLock(ForkOrder::Syslog);
}

bool gOpened FOKRAZO_GUARDED_BY(gSyslogProtect()) = false;
std::atomic<bool> gUsesOwnSocket{false};  // in a child that must not call those functions
std::atomic<bool> gShowsProcess{false};   // whether openlog was called

bool usesOwnSocket() {
  return gUsesOwnSocket || isChildOfThreads();
}

// The name is untrusted: it is set by the caller of exec.
struct Identity {
  char text[128];

  Identity& set() {
    snprintf(text, sizeof text, "%s", programName());
    escapeInPlace(text, strlen(text), sizeof text);
    return *this;
  }
};

Identity gIdentity FOKRAZO_GUARDED_BY(gSyslogProtect());  // openlog keeps the pointer

UniqueFd connectToSyslog() {
  UniqueFd made =
      aboveStandardStreams(UniqueFd(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)));
  constexpr sockaddr_un kSyslog{AF_UNIX, "/dev/log"};
  if (made && connect(made.get(), reinterpret_cast<const sockaddr*>(&kSyslog), sizeof kSyslog) != 0)
    return UniqueFd();
  return made;
}

// Sends a line as the C library does, but with a time-out.
void sendLine(int priority, const char* text) {
  if ((priority & LOG_FACMASK) == 0) priority |= gShowsProcess ? LOG_AUTH : LOG_USER;
  const tm local = calendar::local(time(nullptr));
  char process[16] = "";
  if (gShowsProcess) snprintf(process, sizeof process, "[%d]", static_cast<int>(getpid()));
  char line[768];
  const int wanted = snprintf(line, sizeof line, "<%d>%.3s %2d %02d:%02d:%02d %s%s: %s", priority,
                              &kMonths[3 * local.tm_mon], local.tm_mday, local.tm_hour, local.tm_min,
                              local.tm_sec, Identity().set().text, process, text);
  const size_t length = std::min(static_cast<size_t>(std::max(wanted, 0)), sizeof line - 1);
  const UniqueFd socket = connectToSyslog();
  pollfd writable{socket.get(), POLLOUT, 0};
  if (socket && poll(&writable, 1, kMaxWait) == 1)
    send(socket.get(), line, length, MSG_NOSIGNAL | MSG_DONTWAIT);
}

}  // namespace

void openSyslog() {
  if (usesOwnSocket()) return;
  Lock lock(gSyslogProtect());
  if (gOpened) return;
  openlog(gIdentity.set().text, LOG_PID, LOG_AUTH);
  gOpened = true;
  gShowsProcess = true;
}

void closeSyslog() {
  if (usesOwnSocket()) return;
  Lock lock(gSyslogProtect());
  closelog();
}

void writeSyslog(int priority, const char* text) {
  if (usesOwnSocket()) return sendLine(priority, text);
  Lock lock(gSyslogProtect());
  syslog(priority, "%s", text);
}

void syslogInChild(bool intact) {
  if (!intact) gUsesOwnSocket = true;
}

}  // namespace vesk
