// A name-service module: the directory's users and groups for every program of the host. The C library loads
// it if /etc/nsswitch.conf lists "fokrazo" for passwd, group or shadow, and calls the functions at the end of
// this file.
//
// All threads of the process share one client. Enumerations belong to the process, as in the C library.

#include <nss.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <vector>

#include "entries.h"

namespace {

using namespace example;

static_assert(static_cast<int>(vesk::NameStatus::TryAgain) == NSS_STATUS_TRYAGAIN);
static_assert(static_cast<int>(vesk::NameStatus::Unavailable) == NSS_STATUS_UNAVAIL);
static_assert(static_cast<int>(vesk::NameStatus::NotFound) == NSS_STATUS_NOTFOUND);
static_assert(static_cast<int>(vesk::NameStatus::Success) == NSS_STATUS_SUCCESS);

// How long an `ls -l` waits for a name; and a login for its groups, and a listing for each entry, because the
// daemon may have to ask a distant domain controller for them.
constexpr std::chrono::seconds kDeadline(5);
constexpr std::chrono::seconds kLongDeadline(30);

// A program of another author needs its descriptors.
constexpr unsigned int kSessions = 4;

vesk::ClientOptions clientOptions() {
  vesk::ClientOptions options;
  options.deadline = kDeadline;
  options.sessions = kSessions;
  options.refuseOwnProcess = true;
  return options;
}

vesk::Client& client() {
  return clientOf(clientOptions);
}

vesk::CallOptions patiently() {
  vesk::CallOptions options;
  options.deadline = kLongDeadline;
  return options;
}

// --- Lookups. All throw if there is nothing to return. ---

vesk::ObjectKey keyOf(const char* name) {
  const std::string text(name);
  if (!vesk::isSafeAccountKey(text) || text == kRoot) fail(vesk::VR_NOT_FOUND);
  return text;
}

vesk::ObjectKey keyOf(uint32_t id) {
  if (!isUsableId(id)) fail(vesk::VR_NOT_FOUND);
  return id;
}

template <class Database>
const typename Database::View& usable(const vesk::CallResult<const typename Database::View>& found) {
  if (!Database::isUsable(found.value())) fail(vesk::VR_NOT_FOUND);
  return *found;
}

// The ids of the user's groups, except groups without an id.
std::vector<gid_t> groupIdsOf(const char* name) {
  const auto user = client().user(keyOf(name), vesk::UNIX_ONLY | vesk::GROUP_MEMBERSHIP, patiently());
  const auto groups = client().groupsOf(usable<Users>(user), vesk::UNIX_ONLY, patiently());
  client().closeIdle();  // a login needs several connections, but only once
  std::vector<gid_t> ids;
  for (const auto& group : groups) {
    if (group.status().outcome == vesk::CallOutcome::NotFound) continue;
    // Any other failure throws: an incomplete list could grant what the missing group forbids.
    if (Groups::isUsable(group.value())) ids.push_back(group->getId());
  }
  return ids;
}

// --- Enumeration ---

// The process's enumeration of one database. Thread-safe; created on first use and never destroyed.
template <class Database>
class Enumeration {
 public:
  static Enumeration& instance() {
    static auto* const instance = new Enumeration;
    return *instance;
  }

  // The next entry. If it does not fit into the buffer, the next call returns it. After a failure there are
  // no more entries: a program that continues must not get all of them again.
  typename Database::Entry next(CallerBuffer& buffer) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_range) m_range.emplace(Database::list(client(), patiently()));
    while (!m_current || !Database::isUsable(*m_current)) {
      m_current = m_range->next();
      if (m_current) continue;
      m_range->status().throwIfFailed();
      fail(vesk::VR_NO_MORE);
    }
    const typename Database::Entry entry = Database::write(*m_current, buffer);
    m_current = nullptr;
    return entry;
  }

  // The next entry will be the first one.
  void end() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_current = nullptr;
    m_range.reset();
  }

 private:
  std::mutex m_mutex;  // guards the fields below
  std::optional<typename Database::Range> m_range;
  const typename Database::View* m_current = nullptr;  // of the range, not returned yet
};

// --- Shared by the functions of the module ---

// Runs a function's task. Any answer but success also sets `*errnop`; a function without that argument
// passes &errno.
template <class Task>
nss_status run(int* errnop, Task task) {
  const vesk::Answer result = answer(task);
  if (result.outcome != vesk::Outcome::Success) *errnop = result.error;
  return static_cast<nss_status>(result.nameStatus());
}

// `make` returns the entry and copies its strings to the caller's buffer. `result` is written only on
// success.
template <class Entry, class Make>
nss_status fill(Entry* result, char* buffer, size_t size, int* errnop, Make make) {
  return run(errnop, [&] {
    CallerBuffer texts(buffer, size);
    *result = make(texts);
  });
}

template <class Database, class Key>
nss_status find(Key key, typename Database::Entry* result, char* buffer, size_t size, int* errnop) {
  return fill(result, buffer, size, errnop, [&](CallerBuffer& texts) {
    const auto found = Database::find(client(), keyOf(key));
    return Database::write(usable<Database>(found), texts);
  });
}

template <class Database>
nss_status next(typename Database::Entry* result, char* buffer, size_t size, int* errnop) {
  return fill(result, buffer, size, errnop,
              [](CallerBuffer& texts) { return Enumeration<Database>::instance().next(texts); });
}

// For both setpwent and endpwent, and so on.
template <class Database>
nss_status end() {
  return run(&errno, [] { Enumeration<Database>::instance().end(); });
}

// The C library's array of group ids: `size` elements, the first `start` of them in use. A positive `limit`
// bounds its size.
struct GroupArray {
  long* start;
  long* size;
  gid_t** ids;
  long limit;

  bool has(gid_t id) const { return std::find(*ids, *ids + *start, id) != *ids + *start; }
  bool isFull() const { return limit > 0 && *start >= limit; }

  void add(gid_t id) {
    if (*start == *size) grow();
    (*ids)[(*start)++] = id;
  }

  void grow() {
    const long wanted = std::max(2 * *size, 8L);
    const long larger = limit > 0 ? std::min(wanted, limit) : wanted;
    auto* const moved = static_cast<gid_t*>(realloc(*ids, static_cast<size_t>(larger) * sizeof(gid_t)));
    if (!moved) throw std::bad_alloc();
    *ids = moved;
    *size = larger;
  }
};

}  // namespace

// The functions that the C library calls; nothing else is exported. Their names contain the module's name.
extern "C" {

nss_status _nss_fokrazo_getpwnam_r(const char* name, passwd* result, char* buffer, size_t size, int* errnop) {
  return find<Users>(name, result, buffer, size, errnop);
}

nss_status _nss_fokrazo_getpwuid_r(uid_t uid, passwd* result, char* buffer, size_t size, int* errnop) {
  return find<Users>(uid, result, buffer, size, errnop);
}

nss_status _nss_fokrazo_getgrnam_r(const char* name, group* result, char* buffer, size_t size, int* errnop) {
  return find<Groups>(name, result, buffer, size, errnop);
}

nss_status _nss_fokrazo_getgrgid_r(gid_t gid, group* result, char* buffer, size_t size, int* errnop) {
  return find<Groups>(gid, result, buffer, size, errnop);
}

nss_status _nss_fokrazo_getspnam_r(const char* name, spwd* result, char* buffer, size_t size, int* errnop) {
  return find<Shadows>(name, result, buffer, size, errnop);
}

nss_status _nss_fokrazo_setpwent(int /*stayOpen*/) {
  return end<Users>();
}

nss_status _nss_fokrazo_getpwent_r(passwd* result, char* buffer, size_t size, int* errnop) {
  return next<Users>(result, buffer, size, errnop);
}

nss_status _nss_fokrazo_endpwent() {
  return end<Users>();
}

nss_status _nss_fokrazo_setgrent(int /*stayOpen*/) {
  return end<Groups>();
}

nss_status _nss_fokrazo_getgrent_r(group* result, char* buffer, size_t size, int* errnop) {
  return next<Groups>(result, buffer, size, errnop);
}

nss_status _nss_fokrazo_endgrent() {
  return end<Groups>();
}

nss_status _nss_fokrazo_setspent(int /*stayOpen*/) {
  return end<Shadows>();
}

nss_status _nss_fokrazo_getspent_r(spwd* result, char* buffer, size_t size, int* errnop) {
  return next<Shadows>(result, buffer, size, errnop);
}

nss_status _nss_fokrazo_endspent() {
  return end<Shadows>();
}

// Adds the user's groups, except `primary`, to the array, but only if the daemon returned all of them.
nss_status _nss_fokrazo_initgroups_dyn(const char* user, gid_t primary, long* start, long* size,
                                       gid_t** groups, long limit, int* errnop) {
  return run(errnop, [&] {
    GroupArray array = {start, size, groups, limit};
    for (const gid_t id : groupIdsOf(user))
      if (id != primary && !array.has(id) && !array.isFull()) array.add(id);
  });
}
}
