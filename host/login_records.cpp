#include <unistd.h>
#include <utmp.h>
#include <utmpx.h>

#include <atomic>
#include <cstdio>
#include <cstring>

#include <fokrazo/log.h>
#include <fokrazo/mutex.h>
#include <fokrazo/osutil.h>
#include "util/thread/fork_locks.h"

using vesk::Lock;
using vesk::Mutex;

namespace {

constexpr char kLogger[] = "base.osutil";
constexpr char kRecordFile[] = "/var/run/utmp";

/// The interface in use.
enum UtmpType { Undecided = 0, OldUtmp = 1, Utmpx = 2 };
std::atomic<int> utmpType{Undecided};

/// The result of internal_getutxent with the old interface.
utmpx* oldRecord() {
  static utmpx record;
  return &record;
}

template <size_t Size, size_t FromSize>
void copyText(char (&to)[Size], const char (&from)[FromSize]) {
  snprintf(to, Size, "%.*s", static_cast<int>(Size) - 1, from);
}

// RecordWalk serializes access.
// NOLINTBEGIN(concurrency-mt-unsafe)

utmpx* fromOldInterface() {
  const utmp* found;
  do {
    found = ::getutent();
    if (!found) return nullptr;
  } while (found->ut_user[0] == '\0');
  utmpx* record = oldRecord();
  memset(record, 0, sizeof *record);
  record->ut_type = USER_PROCESS;
  copyText(record->ut_user, found->ut_user);
  copyText(record->ut_line, found->ut_line);
  copyText(record->ut_host, found->ut_host);
  record->ut_tv.tv_sec = found->ut_tv.tv_sec;
  record->ut_tv.tv_usec = found->ut_tv.tv_usec;
  return record;
}

/// Iterates over the records. Only one exists at a time.
class RecordWalk {
 public:
  RecordWalk() : m_lock(mutex()) { internal_setutxent(); }
  ~RecordWalk() noexcept(false) { internal_endutxent(); }

 private:
  static Mutex& mutex() { return vesk::forkedLock(vesk::ForkOrder::LoginRecords); }

  Lock m_lock;
};

bool isOffConsole(const utmpx& record) {
  return strncmp(record.ut_line, "console", sizeof "console") != 0;
}

std::list<std::string> loggedInUsers(bool consoleOnly, const std::string& os, const std::string& version) {
  std::list<std::string> users;
  const RecordWalk walk;
  while (const utmpx* record = internal_getutxent()) {
    if (record->ut_type != USER_PROCESS || record->ut_user[0] == '\0') continue;
    const std::string user(record->ut_user, strnlen(record->ut_user, sizeof record->ut_user));
    if (consoleOnly && isOffConsole(*record)) {
      VESK_LOG_TO(kLogger, Debug, "Skipping non-console user(%s) on %s %s", user.c_str(), os.c_str(),
                  version.c_str());
      continue;
    }
    users.push_back(user);
  }
  return users;
}

}  // namespace

void internal_setutxent() {
  if (utmpType == Undecided) utmpType = ::access(kRecordFile, F_OK) == 0 ? Utmpx : OldUtmp;
  if (utmpType == Utmpx)
    ::setutxent();
  else
    ::setutent();
}

utmpx* internal_getutxent() {
  return utmpType == Utmpx ? ::getutxent() : fromOldInterface();
}

void internal_endutxent() {
  if (utmpType == Utmpx)
    ::endutxent();
  else
    ::endutent();
}

// NOLINTEND(concurrency-mt-unsafe)

std::list<std::string> currentUsers(int flags) {
  std::string os;
  std::string version;
  OSVersion(os, version);
  // Fast user switching leaves records of users who are not at the console.
  const bool consoleOnly =
      (flags & CURRENT_USERS_CONSOLE_ONLY) && os == "Mac OS X" && version.compare(0, 4, "10.4") == 0;
  std::list<std::string> users = loggedInUsers(consoleOnly, os, version);
  if (flags & CURRENT_USERS_SORTED) {
    users.sort();
    users.unique();
  }
  VESK_LOG_TO(kLogger, Trace, "%d users currently logged in:", static_cast<int>(users.size()));
  for (const std::string& user : users) VESK_LOG_TO(kLogger, Trace, "user %s", user.c_str());
  return users;
}

std::list<std::string> currentUsers(bool sorted) {
  return currentUsers(static_cast<int>(sorted));
}

int CurrentLogons(std::string user) {
  int count = 0;
  for (const std::string& name : currentUsers(false)) count += name == user;
  return count;
}
