#include <fokrazo/client.h>

#include <fokrazo/ipc_exception.h>
#include <fokrazo/session.h>
#include <fokrazo/shredder.h>
#include "lrpc/client/client_call.h"
#include "lrpc/client/client_lookup.h"
#include "lrpc/client/object_source.h"

namespace vesk {

namespace {

// The operations that are not lookups. A login that is tried twice counts twice against the account.
constexpr Operation kAuthenticate = {"authenticate", false, false, true};
constexpr Operation kChangePassword = {"change password", false, true, true};
constexpr Operation kSetPassword = {"set password", false, true, true};
constexpr Operation kLogin = {"login", false, true, true};
constexpr Operation kLogout = {"logout", false, true, true};
constexpr Operation kMember = {"member"};
constexpr Operation kPing = {"ping"};
constexpr Operation kHealth = {"health"};
constexpr Operation kFlush = {"flush"};
constexpr Operation kUser = {"user"};
constexpr Operation kGroup = {"group"};
constexpr Operation kShadow = {"shadow"};
constexpr Operation kObject = {"object"};

template <class View>
Wanted wanted(int flags) {
  constexpr DSObjectType type = TypeOf<View>::kType;
  return {type == DSUser ? kUser : kGroup, type, flags};
}

template <class View>
CallResult<View> fromCache(const ReplyCache::Answer& answer) {
  CallStatus status = answer ? CallStatus() : notFoundStatus("");
  status.operation = wanted<View>(0).operation.name;
  status.result = answer ? VR_SUCCESS : VR_NOT_FOUND;
  status.step = CallStep::Reading;
  return {boost::static_pointer_cast<View>(answer), std::move(status)};
}

// The cache's part in one lookup.
template <class View>
class CachedLookup {
 public:
  CachedLookup(ReplyCache& cache, const ObjectKey& key, int flags)
      : m_cache(cache),
        m_key(cache.isOn() ? ReplyCache::keyOf(TypeOf<View>::kType, key, flags) : std::string()),
        m_isFresh((flags & CHECK_AD_FIRST) != 0) {}

  std::optional<CallResult<View>> find() {
    if (!m_cache.isOn()) return std::nullopt;
    if (!m_isFresh)
      if (const auto answer = m_cache.find(m_key)) return fromCache<View>(*answer);
    m_ticket = m_cache.ticket();
    return std::nullopt;
  }
  void keep(const CallResult<View>& result) {
    const CallOutcome outcome = result.status().outcome;
    if (m_cache.isOn() && (outcome == CallOutcome::Success || outcome == CallOutcome::NotFound))
      m_cache.keep(m_ticket, m_key, result.share());
  }

 private:
  ReplyCache& m_cache;
  const std::string m_key;
  const bool m_isFresh;
  ReplyCache::Ticket m_ticket = 0;
};

template <class View>
CallResult<View> lookUp(ClientCore& core, const ObjectKey& key, int flags, const CallOptions& options) {
  CachedLookup<View> cached(core.cache, key, flags);
  if (auto known = cached.find()) return std::move(*known);
  ADObject object;
  CallStatus status = findObject(core, wanted<View>(flags), key, options, core.deadlineOf(options), object);
  CallResult<View> result = viewOf<View>(std::move(status), object);
  cached.keep(result);
  return result;
}

// Counts the objects of a call that looks up many.
class Progress {
 public:
  Progress(const CallOptions& options, size_t all) : m_report(options.progress), m_all(all) {}
  void oneMore() {
    ++m_done;
    if (m_report) m_report(m_done, m_all);
  }

 private:
  const std::function<void(size_t, size_t)>& m_report;
  const size_t m_all;
  size_t m_done = 0;
};

template <class View>
std::vector<CallResult<View>> lookUpAll(ClientCore& core, const std::vector<ObjectKey>& keys, int flags,
                                        const CallOptions& options) {
  Progress progress(options, keys.size());
  std::vector<CallResult<View>> results(keys.size(),
                                        CallResult<View>(notFoundStatus(wanted<View>(0).operation.name)));
  std::vector<CachedLookup<View>> cached;
  std::vector<ObjectKey> unknown;
  std::vector<size_t> places;
  for (size_t i = 0; i < keys.size(); ++i) {
    CachedLookup<View> lookup(core.cache, keys[i], flags);
    auto known = isNoKey(keys[i]) ? results[i] : lookup.find();
    if (known) {
      results[i] = std::move(*known);
      progress.oneMore();
      continue;
    }
    cached.push_back(std::move(lookup));
    unknown.push_back(keys[i]);
    places.push_back(i);
  }
  findObjects(core, wanted<View>(flags), unknown, options,
              [&](size_t index, const CallStatus& status, const ADObject& object) {
                CallResult<View>& result = results[places[index]];
                result = viewOf<View>(status, object);
                cached[index].keep(result);
                progress.oneMore();
              });
  return results;
}

template <class Task>
CallStatus ask(ClientCore& core, const Operation& operation, const CallOptions& options, Task task) {
  return ClientCall(core, operation, options).run(task);
}

// Flushes the daemon's cache, and then the client's, which may have kept an answer of the daemon meanwhile.
template <class Task>
CallStatus flushBoth(ClientCore& core, const CallOptions& options, Task task) {
  const CallStatus status = ask(core, kFlush, options, task);
  core.cache.clear();
  return status;
}

}  // namespace

Client::Client(const ClientOptions& options) : m_core(std::make_unique<ClientCore>(options)) {}

Client::~Client() = default;

// --- One object ---

CallResult<const User> Client::user(const ObjectKey& key, int flags, const CallOptions& options) {
  return lookUp<const User>(*m_core, key, flags, options);
}

CallResult<const Group> Client::group(const ObjectKey& key, int flags, const CallOptions& options) {
  return lookUp<const Group>(*m_core, key, flags, options);
}

CallResult<const User> Client::shadow(const std::string& name, int flags, const CallOptions& options) {
  ADObject object;
  CallStatus status = findObject(*m_core, {kShadow, DSShadow, flags & ~GROUP_MEMBERSHIP}, name, options,
                                 m_core->deadlineOf(options), object);
  return viewOf<const User>(std::move(status), object);
}

CallResult<ADObject> Client::object(const ObjectKey& key, int flags, const CallOptions& options) {
  auto object = boost::make_shared<ADObject>();
  const Deadline end = m_core->deadlineOf(options);
  const bool isAny = key.kind() == KeySid;
  CallStatus status =
      findObject(*m_core, {kObject, isAny ? DSAny : DSUser, flags}, key, options, end, *object);
  if (status.outcome == CallOutcome::NotFound && !isAny)
    status = findObject(*m_core, {kObject, DSGroup, flags}, key, options, end, *object);
  if (!status.ok()) return CallResult<ADObject>(std::move(status));
  return {object, std::move(status)};
}

// --- Many at once ---

std::vector<CallResult<const User>> Client::users(const std::vector<ObjectKey>& keys, int flags,
                                                  const CallOptions& options) {
  return lookUpAll<const User>(*m_core, keys, flags, options);
}

std::vector<CallResult<const Group>> Client::groups(const std::vector<ObjectKey>& keys, int flags,
                                                    const CallOptions& options) {
  return lookUpAll<const Group>(*m_core, keys, flags, options);
}

std::vector<CallResult<const Group>> Client::groupsOf(const User& user, int flags,
                                                      const CallOptions& options) {
  return groups(std::vector<ObjectKey>(user.groupSids().begin(), user.groupSids().end()), flags, options);
}

// --- Listings and searches ---

UserRange Client::users(int flags, const CallOptions& options) {
  return UserRange(std::make_unique<ListingSource>(*m_core, "list users", DSUser, flags, options));
}

GroupRange Client::groups(int flags, const CallOptions& options) {
  return GroupRange(std::make_unique<ListingSource>(*m_core, "list groups", DSGroup, flags, options));
}

UserRange Client::shadows(const CallOptions& options) {
  return UserRange(std::make_unique<ListingSource>(*m_core, "list shadow", DSShadow, UNIX_ONLY, options));
}

SearchRange Client::search(const std::string& domain, const std::string& base, const std::string& filter,
                           const std::vector<std::string>& attributes, LdapSearchScopeType scope,
                           int pageSize, const CallOptions& options) {
  SearchRequest request{domain, base, filter, attributes, scope, pageSize};
  return SearchRange(std::make_unique<SearchSource>(*m_core, std::move(request), options));
}

// --- Logins and passwords ---

CallStatus Client::authenticate(const std::string& user, const Shredder& password,
                                const CallOptions& options) {
  return ask(*m_core, kAuthenticate, options,
             [&](LocalRpcSession& session) { session.validatePlainTextUser(user, password, false); });
}

CallStatus Client::changePassword(const std::string& user, const Shredder& oldPassword,
                                  const Shredder& newPassword, const CallOptions& options) {
  return ask(*m_core, kChangePassword, options, [&](LocalRpcSession& session) {
    session.changePassword(user, oldPassword, newPassword, false);
  });
}

CallStatus Client::setPassword(const std::string& user, const Shredder& password,
                               const std::string& adminUser, const Shredder& adminPassword,
                               const CallOptions& options) {
  return ask(*m_core, kSetPassword, options, [&](LocalRpcSession& session) {
    session.setPassword(user, password, adminUser, adminPassword);
  });
}

CallStatus Client::member(const std::string& user, const std::vector<std::string>& groups,
                          const CallOptions& options) {
  return ask(*m_core, kMember, options, [&](LocalRpcSession& session) {
    session.validateUserGroup(user, groups, false, UNIX_NAME | WINDOWS_NAME);
  });
}

CallStatus Client::loggedIn(const std::string& user, const CallOptions& options) {
  return ask(*m_core, kLogin, options, [&](LocalRpcSession& session) { session.userLogin(user); });
}

CallStatus Client::loggedOut(const std::string& user, const CallOptions& options) {
  return ask(*m_core, kLogout, options, [&](LocalRpcSession& session) { session.userLogout(user); });
}

// --- The daemon ---

CallStatus Client::ping(const CallOptions& options) {
  CallOptions own = options;
  own.evenIfAway = true;
  return ask(*m_core, kPing, own, [](LocalRpcSession& session) { session.ping(); });
}

CallResult<const Health> Client::health(const CallOptions& options) {
  auto health = boost::make_shared<Health>();
  CallStatus status = ask(*m_core, kHealth, options, [&](LocalRpcSession& session) {
    try {
      session.ldapFetch("", "", nullptr, false);
    } catch (const IPCException&) {  // every reply has the daemon's condition in its status block
    }
    *health = {session.healthResult(), session.healthValue1(), session.healthValue2(),
               session.healthMessage()};
  });
  if (status.result == VR_NO_REPLY_YET) return CallResult<const Health>(std::move(status));
  status.outcome = CallOutcome::Success;
  return {health, std::move(status)};
}

CallStatus Client::flush(const std::string& key, const CallOptions& options) {
  return flushBoth(*m_core, options, [&](LocalRpcSession& session) { session.flushCache(key); });
}

CallStatus Client::flush(unsigned int selectors, const CallOptions& options) {
  return flushBoth(*m_core, options, [&](LocalRpcSession& session) { session.flushCache(selectors); });
}

CallStatus Client::call(const char* operation, Repeat repeat,
                        const std::function<void(LocalRpcSession&)>& task, const CallOptions& options) {
  const bool isHarmless = repeat == Repeat::Harmless;
  return ask(*m_core, {operation, isHarmless, !isHarmless, !isHarmless}, options, task);
}

// --- The client itself ---

void Client::closeIdle() {
  m_core->pool.closeIdle(std::chrono::milliseconds(0));
}

void Client::clearCache() {
  m_core->cache.clear();
}

}  // namespace vesk
