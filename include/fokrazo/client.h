/// The daemon for a whole program: any thread, one deadline for each call, and always the reason.
///
///   Client client;
///   const auto user = client.user("lquispe");
///   if (user) printf("%s\n", user->home().c_str());
///   else if (user.status().outcome == CallOutcome::NotFound) puts("no such user");
///   else puts(user.status().describe().c_str());  // the daemon is away, too slow, not to be trusted …
#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <fokrazo/adobject.h>
#include <fokrazo/call_result.h>
#include <fokrazo/call_status.h>
#include <fokrazo/cancellation.h>
#include <fokrazo/export.h>
#include <fokrazo/fixed_paths.h>
#include <fokrazo/object_key.h>
#include <fokrazo/object_range.h>
#include <fokrazo/session_types.h>
#include <fokrazo/unixviews.h>

namespace vesk {

class ClientCore;
class LocalRpcSession;
class Shredder;

/// How long answers are kept, and how many. Nothing is kept by default.
struct CacheOptions {
  /// The most answers; 0 keeps none.
  size_t entries = 0;
  /// The most bytes of objects.
  size_t bytes = 8 << 20;
  /// For how long "found" and "not found" are believed.
  std::chrono::milliseconds found{60'000};
  std::chrono::milliseconds notFound{10'000};
};

/// What a client is made with.
struct ClientOptions {
  /// The daemon's socket.
  std::string socketPath = paths::kDaemonSocket;
  /// For each call that sets none of its own; see CallOptions.
  std::chrono::milliseconds deadline{10'000};
  /// The most connections, 1 to 64.
  unsigned int sessions = 8;
  /// A connection that nobody has used for that long is closed, at the latest with the next call.
  std::chrono::milliseconds idle{10'000};
  /// The effective user that the daemon must have; none: anyone. Never taken from the environment.
  std::optional<uid_t> trustedPeer = 0;
  /// Whether this process must not be the daemon. For modules, which the daemon may load too.
  bool refuseOwnProcess = false;
  /// Whether the daemon checks this process on each connection: LocalRpcSession::authenticateProcess.
  bool authenticateProcess = false;
  CacheOptions cache;
};

/// What one call may change.
struct CallOptions {
  /// How long the whole call may take: the wait for a free connection, connecting, every piece of the request
  /// and of the reply, and a second attempt. Signals do not extend it.
  std::optional<std::chrono::milliseconds> deadline;
  /// Lets another thread end the call; must outlive it.
  const Cancellation* cancellation = nullptr;
  /// Whether to try although the daemon failed a moment ago.
  bool evenIfAway = false;
  /// For calls that look up many objects: called in the caller's thread after each, with the number that is
  /// done and the number of all. Must not throw.
  std::function<void(size_t done, size_t all)> progress;
};

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
/// Every call returns what became of it, within its deadline, and throws nothing but what is said at the
/// call. It uses one of a bounded number of connections, made when they are needed. A request is sent a
/// second time only if the first connection failed and repeating is harmless, or the daemon cannot have read
/// it whole.
///
/// After a hang, or while nobody listens, calls fail at once for a short time that grows with each further
/// failure, from a quarter of a second to 15 seconds, so that a program beside a dead daemon waits once and
/// not for every call.
///
/// Thread-safety: any number of threads. What a call returns belongs to the caller; users and groups may be
/// shared between threads. Fork: the child uses the client as its own; it makes connections of its own. A
/// call that another thread had under way does not exist in the child.
class FOKRAZO_API Client {
 public:
  /// Connects with the first call.
  explicit Client(const ClientOptions& options = {});
  /// Closes the connections. Requires: no call is under way, and no range is left.
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
