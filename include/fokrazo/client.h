/// The daemon for a whole program: any thread, one deadline for each call, and always the reason.
///
///   Client client;
///   const auto user = client.user("lquispe");
///   if (user) printf("%s\n", user->home().c_str());
///   else if (user.status().outcome == CallOutcome::NotFound) puts("no such user");
///   else puts(user.status().describe().c_str());  // the daemon is away, too slow, not to be trusted …
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <fokrazo/adobject.h>
#include <fokrazo/call_result.h>
#include <fokrazo/call_status.h>
#include <fokrazo/client_options.h>
#include <fokrazo/export.h>
#include <fokrazo/object_key.h>
#include <fokrazo/object_range.h>
#include <fokrazo/session_types.h>
#include <fokrazo/unixviews.h>

namespace vesk {

class ClientCore;
class LocalRpcSession;
class Shredder;

/// The daemon's condition, as it describes it.
struct Health {
  /// VR_SUCCESS if it is well.
  ValidationResult result = VR_NO_REPLY_YET;
  /// Two numbers and a text that go with the result.
  int value1 = 0;
  int value2 = 0;
  std::string text;
};

/// A program's one way to the daemon.
///
/// Every call returns a status within its deadline, and throws only what its comment lists and
/// std::bad_alloc. Calls share a bounded number of connections, opened on demand. A request is sent a second
/// time only if the exchange failed and repeating it is harmless, or if the daemon cannot have read all of
/// it.
///
/// After a hang, or while no daemon listens, calls fail immediately for a back-off time that grows from 0.25
/// to 15 seconds: a program beside a dead daemon waits once, not for every call.
///
/// Thread-safety: any number of threads. Users and groups that a call returns may be shared between threads.
/// Fork: the child uses the client with connections of its own. Calls of other threads do not exist there.
class FOKRAZO_API Client {
 public:
  /// Connects with the first call.
  explicit Client(const ClientOptions& options = {});
  /// Closes the connections. Requires: no call is running, and all ranges are destroyed.
  ~Client();
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  // --- One object; `flags` are UNIX_ONLY, CHECK_AD_FIRST and GROUP_MEMBERSHIP ---

  /// The user or group with this key.
  CallResult<const User> user(const ObjectKey& key, int flags = 0, const CallOptions& options = {});
  CallResult<const Group> group(const ObjectKey& key, int flags = 0, const CallOptions& options = {});
  /// With the attributes of password ageing.
  CallResult<const User> shadow(const std::string& name, int flags = 0, const CallOptions& options = {});
  /// A user, or else a group. The object belongs to one thread at a time.
  CallResult<ADObject> object(const ObjectKey& key, int flags = 0, const CallOptions& options = {});

  // --- Many at once: over several connections in parallel, within one deadline, in the order of the keys ---

  /// One result for each key.
  std::vector<CallResult<const User>> users(const std::vector<ObjectKey>& keys, int flags = 0,
                                            const CallOptions& options = {});
  std::vector<CallResult<const Group>> groups(const std::vector<ObjectKey>& keys, int flags = 0,
                                              const CallOptions& options = {});
  /// The groups that the user is in, nested ones included, each as the daemon answers for its SID.
  std::vector<CallResult<const Group>> groupsOf(const User& user, int flags = 0,
                                                const CallOptions& options = {});

  // --- Listings and searches, an object at a time; the deadline is that of each request ---

  /// All users or groups that the daemon lists; with UNIX_ONLY those with a Unix profile.
  UserRange users(int flags = 0, const CallOptions& options = {});
  GroupRange groups(int flags = 0, const CallOptions& options = {});
  /// All users with a Unix profile, with the attributes of password ageing.
  UserRange shadows(const CallOptions& options = {});
  /// The objects below `base` that match an LDAP filter (RFC 4515), fetched page by page. Empty `domain`: the
  /// daemon's own. No `attributes`: all of them.
  SearchRange search(const std::string& domain, const std::string& base, const std::string& filter,
                     const std::vector<std::string>& attributes = {},
                     LdapSearchScopeType scope = ScopeSubtree, int pageSize = 500,
                     const CallOptions& options = {});

  // --- Logins and passwords: sent once, on a new connection ---

  /// Success if the password is right and the account may log in.
  CallStatus authenticate(const std::string& user, const Shredder& password, const CallOptions& options = {});
  CallStatus changePassword(const std::string& user, const Shredder& oldPassword, const Shredder& newPassword,
                            const CallOptions& options = {});
  CallStatus setPassword(const std::string& user, const Shredder& password, const std::string& adminUser,
                         const Shredder& adminPassword, const CallOptions& options = {});
  /// Success if the user is in any of the groups.
  CallStatus member(const std::string& user, const std::vector<std::string>& groups,
                    const CallOptions& options = {});
  /// Tell the daemon of a login or logout.
  CallStatus loggedIn(const std::string& user, const CallOptions& options = {});
  CallStatus loggedOut(const std::string& user, const CallOptions& options = {});

  // --- The daemon ---

  /// Success if the daemon answers; asks even if it failed a moment ago.
  CallStatus ping(const CallOptions& options = {});
  CallResult<const Health> health(const CallOptions& options = {});
  /// Makes the daemon, and this client's cache, forget an object, or what the FLUSH_ selectors say.
  CallStatus flush(const std::string& key, const CallOptions& options = {});
  CallStatus flush(unsigned int selectors, const CallOptions& options = {});

  // --- Anything else that a session can do ---

  /// Whether a request may be sent again after the daemon has had it.
  enum class Repeat { Harmless, Never };
  /// Runs `task` with a session, within the limits of the call. The status is that of the task's last reply,
  /// or of the exception that it let pass. The session must not be kept.
  ///
  ///   client.call("roles", Client::Repeat::Harmless, [&](LocalRpcSession& session) {
  ///     roles = session.samGetUserRoles("lquispe", false);
  ///   });
  ///
  /// `operation` is a constant text for messages.
  CallStatus call(const char* operation, Repeat repeat, const std::function<void(LocalRpcSession&)>& task,
                  const CallOptions& options = {});

  // --- The client itself ---

  /// Closes the connections that no call is using.
  void closeIdle();
  /// Forgets all answers that are kept.
  void clearCache();

 private:
  std::unique_ptr<ClientCore> m_core;
};

}  // namespace vesk
