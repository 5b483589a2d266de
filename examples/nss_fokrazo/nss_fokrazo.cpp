// A name-service module: the directory's users and groups for every program of the host. The C library loads
// it if /etc/nsswitch.conf lists "fokrazo" for passwd, group or shadow, and calls the functions at the end of
// this file.
//
// Each thread has its own session for lookups. Enumerations belong to the process, as in the C library, and
// have their own sessions, because the daemon keeps one position in a listing per connection.

#include <nss.h>

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <vector>

#include "entries.h"

namespace {

using namespace example;

static_assert(static_cast<int>(vesk::NameStatus::TryAgain) == NSS_STATUS_TRYAGAIN);
static_assert(static_cast<int>(vesk::NameStatus::Unavailable) == NSS_STATUS_UNAVAIL);
static_assert(static_cast<int>(vesk::NameStatus::NotFound) == NSS_STATUS_NOTFOUND);
static_assert(static_cast<int>(vesk::NameStatus::Success) == NSS_STATUS_SUCCESS);

// --- Lookups. All throw Failure if there is nothing to return. ---

pthread_key_t makeSessionKey() {
  pthread_key_t key;
  if (pthread_key_create(&key, [](void* session) { delete static_cast<ModuleSession*>(session); }) != 0)
    fail(vesk::VR_TRY_AGAIN);
  return key;
}

// Uses a thread key, because destructors of other keys and atexit handlers may look names up when a
// thread_local object is already gone. If such a destructor creates a new session, the C library calls this
// key's destructor again.
ModuleSession& threadSession() {
  static const pthread_key_t key = makeSessionKey();
  if (void* const session = pthread_getspecific(key)) return *static_cast<ModuleSession*>(session);
  auto session = std::make_unique<ModuleSession>();
  if (pthread_setspecific(key, session.get()) != 0) throw std::bad_alloc();
  return *session.release();
}

template <class Database, class Key>
typename Database::View find(vesk::KeyKind kind, const Key& key, int flags) {
  const auto view =
      usableView<Database>(threadSession().find(Database::kType, kind, key, vesk::UNIX_ONLY | flags));
  if (!view) fail(vesk::VR_NOT_FOUND);
  return *view;
}

template <class Database>
typename Database::View findByName(const std::string& name, int flags = Database::kFlags) {
  if (!vesk::isSafeAccountKey(name) || ModuleSession::isReserved(name)) fail(vesk::VR_NOT_FOUND);
  return find<Database>(vesk::KeyName, name, flags);
}

// Root belongs to the host: a lookup of uid 0 must not wait for the daemon.
template <class Database>
typename Database::View findById(uint32_t id) {
  if (!isUsableId(id)) fail(vesk::VR_NOT_FOUND);
  return find<Database>(vesk::KeyId, static_cast<int>(id), Database::kFlags);
}

// The ids of the user's groups, except groups without an id.
std::vector<gid_t> groupsOf(const std::string& name) {
  const vesk::User user = findByName<Users>(name, vesk::GROUP_MEMBERSHIP);
  std::vector<gid_t> ids;
  for (const vesk::SID& sid : user.groupSids()) {
    try {
      if (!sid.isNull()) ids.push_back(find<Groups>(vesk::KeySid, sid, 0).getId());
    } catch (const Failure& failure) {  // an incomplete list could grant what the missing group forbids
      if (failure.answer.outcome != vesk::Outcome::NotFound) throw;
    }
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

  void begin() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    close();
    open();
  }

  // The next entry. If it does not fit into the buffer, the next call returns it.
  typename Database::Entry next(CallerBuffer& buffer) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_session && !m_end) open();
    if (!m_pending) advance();
    const typename Database::Entry entry = Database::write(*m_pending, buffer);
    m_pending.reset();
    return entry;
  }

  void end() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    close();
  }

 private:
  void open() {
    m_session.emplace();
    endOnFailure([this] { m_session->startListing(Database::kType); });
  }

  void advance() {
    if (m_end) throw Failure{*m_end};
    endOnFailure([this] {
      // The end of the listing is a failure, so this ends.
      while (!m_pending) m_pending = usableView<Database>(m_session->next(Database::kType));
    });
  }

  // A failure ends the enumeration for good: a program that continues must not get all entries again.
  template <class Step>
  void endOnFailure(Step step) {
    try {
      step();
    } catch (...) {
      close();
      m_end = currentAnswer();
      throw;
    }
  }

  // The daemon forgets the listing when the connection closes.
  void close() {
    m_session.reset();
    m_pending.reset();
    m_end.reset();
  }

  std::mutex m_mutex;  // guards the fields below
  std::optional<ModuleSession> m_session;
  std::optional<typename Database::View> m_pending;
  std::optional<vesk::Answer> m_end;  // why there are no more entries
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
  return fill(result, buffer, size, errnop,
              [&](CallerBuffer& texts) { return Users::write(findByName<Users>(name), texts); });
}

nss_status _nss_fokrazo_getpwuid_r(uid_t uid, passwd* result, char* buffer, size_t size, int* errnop) {
  return fill(result, buffer, size, errnop,
              [&](CallerBuffer& texts) { return Users::write(findById<Users>(uid), texts); });
}

nss_status _nss_fokrazo_getgrnam_r(const char* name, group* result, char* buffer, size_t size, int* errnop) {
  return fill(result, buffer, size, errnop,
              [&](CallerBuffer& texts) { return Groups::write(findByName<Groups>(name), texts); });
}

nss_status _nss_fokrazo_getgrgid_r(gid_t gid, group* result, char* buffer, size_t size, int* errnop) {
  return fill(result, buffer, size, errnop,
              [&](CallerBuffer& texts) { return Groups::write(findById<Groups>(gid), texts); });
}

nss_status _nss_fokrazo_setpwent(int /*stayOpen*/) {
  return run(&errno, [] { Enumeration<Users>::instance().begin(); });
}

nss_status _nss_fokrazo_getpwent_r(passwd* result, char* buffer, size_t size, int* errnop) {
  return fill(result, buffer, size, errnop,
              [](CallerBuffer& texts) { return Enumeration<Users>::instance().next(texts); });
}

nss_status _nss_fokrazo_endpwent() {
  return run(&errno, [] { Enumeration<Users>::instance().end(); });
}

nss_status _nss_fokrazo_setgrent(int /*stayOpen*/) {
  return run(&errno, [] { Enumeration<Groups>::instance().begin(); });
}

nss_status _nss_fokrazo_getgrent_r(group* result, char* buffer, size_t size, int* errnop) {
  return fill(result, buffer, size, errnop,
              [](CallerBuffer& texts) { return Enumeration<Groups>::instance().next(texts); });
}

nss_status _nss_fokrazo_endgrent() {
  return run(&errno, [] { Enumeration<Groups>::instance().end(); });
}

nss_status _nss_fokrazo_getspnam_r(const char* name, spwd* result, char* buffer, size_t size, int* errnop) {
  return fill(result, buffer, size, errnop,
              [&](CallerBuffer& texts) { return Shadows::write(findByName<Shadows>(name), texts); });
}

nss_status _nss_fokrazo_setspent(int /*stayOpen*/) {
  return run(&errno, [] { Enumeration<Shadows>::instance().begin(); });
}

nss_status _nss_fokrazo_getspent_r(spwd* result, char* buffer, size_t size, int* errnop) {
  return fill(result, buffer, size, errnop,
              [](CallerBuffer& texts) { return Enumeration<Shadows>::instance().next(texts); });
}

nss_status _nss_fokrazo_endspent() {
  return run(&errno, [] { Enumeration<Shadows>::instance().end(); });
}

// Adds the user's groups, except `primary`, to the array, but only if the daemon returned all of them.
nss_status _nss_fokrazo_initgroups_dyn(const char* user, gid_t primary, long* start, long* size,
                                       gid_t** groups, long limit, int* errnop) {
  return run(errnop, [&] {
    GroupArray array = {start, size, groups, limit};
    for (const gid_t id : groupsOf(user))
      if (id != primary && !array.has(id) && !array.isFull()) array.add(id);
  });
}
}
