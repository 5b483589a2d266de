/// The client side of the daemon: one member function for each operation.
#pragma once

#include <pthread.h>
#include <sys/types.h>

#include <atomic>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include <fokrazo/export.h>
#include <fokrazo/session_types.h>
#include <fokrazo/validation_result.h>

namespace vesk {

class ADObject;
class ADObjectList;
class Exchange;
class Group;
class Guid;
class IPCReply;
class IPCRequest;
class PagedSearchHandle;
class SID;
class Shredder;
class User;
class VeskObj;
struct CallProgress;

/// A session with the daemon, over one connection that is opened on first use:
///
///   LocalRpcSession session("/var/velmora/daemon", false, false);
///   session.setTrustedPeer(0);  // before sending secrets: accept only a daemon that runs as root
///   boost::shared_ptr<User> user = session.getUser("lquispe", 0);
///
/// Every operation sends one request and waits for its reply, for at most `lrpc.timeout` seconds in each
/// step. Unless its comment says "sent once", a request whose exchange fails is sent again on a new
/// connection, so the daemon may carry it out twice. Every operation throws what execute and executeWithRetry
/// throw; its own comment lists only further exceptions. After an operation the status fields hold the status
/// of its reply. Arguments and values that are not explained here are passed on unchanged; only the daemon
/// interprets them.
///
/// The connection. Its descriptor is above 2 and always close-on-exec. Before each request the session checks
/// that the connection is still usable and otherwise opens a new one: see reConnect.
///
/// Thread-safety: one thread at a time; two threads need two sessions. A thread that uses a session during
/// another thread's operation gets a SystemException (EBUSY) "session in use by another thread"; the other
/// operation is not disturbed.
/// Fork: the child's copy of the descriptor is closed immediately, and the child's first request opens a new
/// connection. The parent's connection is unaffected. If another thread was using the session during the
/// fork, the child cannot use it.
class FOKRAZO_API LocalRpcSession {
 public:
  /// With `connectNow` tries to connect immediately, and logs a warning if that fails. With
  /// `authenticateProcess` the daemon checks this process on each new connection: see authenticateProcess.
  LocalRpcSession(const std::string& socketPath, bool connectNow, bool authenticateProcess);
  /// Closes the connection.
  ~LocalRpcSession();
  LocalRpcSession(const LocalRpcSession&) = delete;
  LocalRpcSession& operator=(const LocalRpcSession&) = delete;

  // --- The connection ---

  /// From now on accepts only a daemon whose effective user is `uid`, 0 for root. Every new connection is
  /// checked before anything is sent on it; the current one is closed. The user is that of the daemon's
  /// process when it began to listen (SO_PEERCRED). If the user differs, the operation sends nothing and
  /// throws IOException (EACCES) "ipc socket peer has uid 1000 instead of 0". To have the very first
  /// connection checked too, construct with `connectNow` false.
  void setTrustedPeer(uid_t uid);
  /// Ensures a usable connection. Every operation begins with this. Replaces a connection that
  /// - has been idle for more than `lrpc.session.timeout` seconds,
  /// - was opened before a fork, or under another effective user or group,
  /// - is gone, because the program has closed or reused the descriptor,
  /// - was left in the middle of an exchange by an exception,
  /// - has ended, or has something to read before a request was sent.
  ///
  /// With `authenticate` a new connection is authenticated, if the session wants that.
  /// @throws IOException the daemon cannot be reached, or is not the trusted peer
  /// @throws ConnectionBrokenException the daemon sent unrequested data on a new connection
  /// @throws what authenticateProcess throws
  void reConnect(bool authenticate);
  /// Has the daemon check this process, unless that was done on this connection; from now on also on each new
  /// connection, before its first request. If the daemon refuses, the connection stays open but
  /// unauthenticated: later requests still use it, and the daemon decides on each of them. After
  /// dropConnection the next operation tries again.
  /// @throws SystemException the daemon refuses
  void authenticateProcess();
  /// Close the connection, if there is one. A descriptor that the program has closed and reused stays open.
  void lostConnection();
  void dropConnection();
  /// The descriptor of the connection, -1 while there is none. The session owns it.
  int socket() const { return m_socket; }
  /// Whether the daemon has checked this process on this connection.
  bool processAuthenticated() const { return m_processAuthenticated; }

  // --- Exchanges of requests that the caller builds ---

  /// Sends the request once and receives its reply. With `authenticate` a new connection is authenticated
  /// first, if the session wants that.
  /// @throws ConnectionBrokenException the peer is gone; the connection is closed
  /// @throws TimeoutException the peer did not answer in time; the next request uses a new connection
  /// @throws SystemException the reply's result is not success; rc() is that result
  /// @throws IOException the daemon cannot be reached, or its reply cannot be read
  void execute(IPCRequest& request, IPCReply& reply, bool authenticate);
  /// As execute, but if the exchange fails for any reason, sends the same bytes again on a new connection. If
  /// the daemon cannot be reached, there is no second attempt. After a second failure the connection is
  /// closed.
  /// @throws what execute throws, from the last attempt
  void executeWithRetry(IPCRequest& request, IPCReply& reply, bool authenticate);
  /// execute, with authentication.
  void lrpc(IPCRequest& request, IPCReply& reply);

  // --- The status block of the last reply ---

  /// Reads the status block, the eight fields that begin the body of nearly every reply, into the status
  /// fields, and returns the first of them. Missing fields read as VR_SYSTEM_ERROR, 0 or empty. Does not
  /// throw, whatever was received.
  ValidationResult updateVRErrInfo(IPCReply& reply);
  /// What the status block of the last operation's reply said; VR_NO_REPLY_YET if there was none, because the
  /// operation has failed before or its reply has no such block (ping and stop). If the daemon sends that
  /// very number, it reads as VR_UNSPECIFIED_ERROR here.
  ValidationResult lastResult() const { return m_lastResult; }
  /// The text of a result; "unexpected error" for an unknown number.
  static std::string errorString(ValidationResult value);

  /// Qualifies a result, such as END_OF_LIST.
  int statusCode() const { return m_statusCode; }
  /// Qualifies a result further; the NT status, if there is one.
  int statusDetail() const { return m_statusDetail; }
  /// Human-readable.
  const std::string& statusMessage() const { return m_statusMessage; }
  /// The daemon's own health, with two numbers and a text; VR_NO_REPLY_YET before the first reply.
  ValidationResult healthResult() const { return m_healthResult; }
  int healthValue1() const { return m_healthValue1; }
  int healthValue2() const { return m_healthValue2; }
  const std::string& healthMessage() const { return m_healthMessage; }

  // --- The daemon itself ---

  /// Returns if the daemon answers.
  void ping();
  /// Ends the daemon. Sent once.
  void stop();

  // --- Lookups of one object ---
  // `flags` are UNIX_ONLY, CHECK_AD_FIRST and GROUP_MEMBERSHIP. Lookups by id and getShadow ignore UNIX_ONLY;
  // getShadow also ignores GROUP_MEMBERSHIP. The name NEXT_ENTRY asks for the next entry of the open listing
  // of that kind, and is sent once.

  /// Return an empty object if there is none of that name. @throws IPCException the daemon's failure
  ADObject getObject(const std::string& name, DSObjectType type, int flags);
  ADObject getUserObj(const std::string& name, int flags);
  ADObject getGroupObj(const std::string& name, int flags);
  /// Return an empty object if there is none, or if the daemon fails.
  ADObject getUserObj(int uid, int flags);
  ADObject getGroupObj(int gid, int flags);

  /// @throws NotFoundException "User not found", "Group not found"
  /// @throws IPCException only by name: the daemon's failure
  boost::shared_ptr<User> getUser(const std::string& name, int flags);
  boost::shared_ptr<Group> getGroup(const std::string& name, int flags);
  boost::shared_ptr<User> getUser(int uid, int flags);
  boost::shared_ptr<Group> getGroup(int gid, int flags);
  /// @throws NotFoundException on any failure: "User not found"; for a group by SID "Object not found", by
  /// GUID "Group not found"
  /// @throws BadDataException a null SID
  boost::shared_ptr<User> getUser(const SID& sid, int flags);
  boost::shared_ptr<Group> getGroup(const SID& sid, int flags);
  boost::shared_ptr<User> getUser(const Guid& guid, int flags);
  boost::shared_ptr<Group> getGroup(const Guid& guid, int flags);
  /// Returns a User for a user or a computer, a Group for a group.
  /// @throws NotFoundException "Group not found" on any failure, "SID is not a user or group"
  /// @throws BadDataException a null SID
  boost::shared_ptr<VeskObj> getObject(const SID& sid, int flags);

  /// For listings.
  /// @throws EndOfListException "End of list"
  /// @throws NotFoundException "User not found", "Group not found"
  /// @throws IPCException the daemon's failure
  boost::shared_ptr<User> getUser2(const std::string& name, int flags);
  boost::shared_ptr<Group> getGroup2(const std::string& name, int flags);
  /// @throws NotFoundException "User not found", on any failure and at the end of a listing
  boost::shared_ptr<User> getShadow(const std::string& name, int flags);

  // --- Listings: the daemon keeps one position per kind and connection ---
  //
  // Start and end a listing; a lookup of NEXT_ENTRY returns its next entry. A new connection has no open
  // listing. All return true on failure. Only the daemon interprets `daemonFlag`.

  bool startListUser();
  bool startListGroup(bool daemonFlag);
  bool startListShadow();
  /// Sent once.
  bool endListUser();
  bool endListGroup();
  bool endListShadow();

  // --- LDAP ---
  // `domain` is a DNS or short name, empty for the daemon's own domain. `attributes` lists the wanted
  // attributes and ends with a null pointer; null means all. `limit` is the maximum number of objects, 0 for
  // all; `pageSize`, that of a page. Only the daemon interprets `daemonFlag`.
  // @throws IPCException the daemon's failure

  ADObjectList ldapSearch(const std::string& domain, const std::string& baseDn, const std::string& filter,
                          const char** attributes, LdapSearchScopeType scope, int limit, bool daemonFlag);
  /// The handle refers to this session, which must outlive it.
  PagedSearchHandle ldapPagedSearch(const std::string& domain, const std::string& baseDn,
                                    const std::string& filter, const char** attributes,
                                    LdapSearchScopeType scope, int pageSize, bool daemonFlag);
  /// One object; an empty `dn` means the root of the directory.
  ADObject ldapFetch(const std::string& domain, const std::string& dn, const char** attributes,
                     bool daemonFlag);

  // --- Authentication ---
  // Passwords and tokens are sent unencrypted: call setTrustedPeer first. The caller wipes its own copies
  // (<fokrazo/shredder.h>); the library wipes the messages. Only the daemon interprets `daemonFlag`.

  ValidationResult validatePlainTextUser(const std::string& user, const Shredder& password, bool daemonFlag);
  /// For login modules: sends the request once, on a new connection of its own. So no earlier reply can be
  /// mistaken for this one, and with setTrustedPeer the password goes only to a peer that has just been
  /// checked.
  ValidationResult validatePlainTextUserOnce(const std::string& user, const Shredder& password,
                                             bool daemonFlag);
  /// @throws SystemException "failed to validate Kerberos user"
  boost::shared_ptr<User> validateKerberosUser(const std::string& principal, const std::string& token);
  /// @throws SystemException "failed to get NLTM challenge"
  std::string getNtlmChallenge(const std::string& negotiation);
  /// Sent once. @throws SystemException "failed to validate NTLM user"
  boost::shared_ptr<User> validateNtlmUser(const std::string& response);
  /// VR_SUCCESS if the user is in any of the groups. `nameFlags` are UNIX_NAME and WINDOWS_NAME, the form of
  /// the groups' names.
  ValidationResult validateUserGroup(const std::string& user, const std::vector<std::string>& groups,
                                     bool daemonFlag, int nameFlags);
  /// The canonical form of service/host; the host is sent in lower case.
  /// @throws NotFoundException "failed to get canonicalized service principal name"
  std::string getServicePrincipal(const std::string& host, const std::string& service);
  /// Report a login or logout to the daemon; true on failure. Sent once.
  bool userLogin(const std::string& user);
  bool userLogout(const std::string& user);
  /// `count` is set on success only.
  ValidationResult renewCredentials(const std::string& user, int& count);

  // --- Passwords, accounts and the machine ---
  // A change that the daemon refuses is a result, not an exception. Sent once, unless the comment says
  // otherwise. `adminUser` and `adminPassword` authorize the change.

  ValidationResult changePassword(const std::string& user, const Shredder& oldPassword,
                                  const Shredder& newPassword, bool daemonFlag);
  ValidationResult setPassword(const std::string& user, const Shredder& password,
                               const std::string& adminUser, const Shredder& adminPassword);
  ValidationResult setPasswordKrb5(const std::string& user, const Shredder& password);
  /// The daemon chooses values for empty strings; `container` is the DN under which the user is created.
  ValidationResult addUser(const std::string& user, const Shredder& password, const std::string& uid,
                           const std::string& gid, const std::string& fullName, const std::string& home,
                           const std::string& shell, const std::string& container,
                           const std::string& adminUser, const Shredder& adminPassword);
  ValidationResult addUserKrb5(const std::string& user, const Shredder& password, const std::string& uid,
                               const std::string& gid, const std::string& fullName, const std::string& home,
                               const std::string& shell, const std::string& container);
  /// May be sent twice. Without `computer`, for this machine's account.
  ValidationResult setMachinePassword(const std::string& computer, const Shredder& password,
                                      const std::string& adminUser, const Shredder& adminPassword);
  ValidationResult setMachinePassword(const Shredder& password);
  /// May be sent twice. `ntStatus` and `errorText` are always set, `sessionKey` on success only.
  ValidationResult netLogonSamLogon(const std::string& user, const std::string& domain,
                                    const std::string& token, unsigned int daemonOption,
                                    std::string& sessionKey, int& ntStatus, std::string& errorText);
  /// May be sent twice. `ntStatus` and `errorText` are always set. Only the daemon interprets `daemonText1`
  /// and `daemonText2`.
  ValidationResult samChangeUserPassword2(const std::string& user, const std::string& newPassword,
                                          const std::string& oldPassword, const std::string& daemonText1,
                                          const std::string& daemonText2, int& ntStatus,
                                          std::string& errorText);

  // --- Cache, policy, health and roles ---

  /// Flush one key, one object, or the caches that the FLUSH_ bits select.
  ValidationResult flushCache(const std::string& key);
  ValidationResult flushCache(ADObject& object);
  ValidationResult flushCache(unsigned int selectors);
  /// Tells the daemon that the network has changed.
  ValidationResult networkChange();
  /// Return a human-readable text. Sent once.
  /// @throws SystemException the refresh failed; the message is the daemon's, rc() its detail or 9
  std::string updateUserPolicy(const std::string& user);
  std::string updateMachinePolicy();
  /// The part of the daemon's state with the number `what`. @throws SystemException "could not get sysinfo"
  std::string getSystemInfo(unsigned int what);
  /// For debugging the daemon; only the daemon interprets the strings.
  ValidationResult dumpCache(const std::string& daemonText1, const std::string& daemonText2,
                             const std::string& daemonText3);
  /// @throws SystemException "could do sandbox test"
  bool samEnabled();
  bool samIsSandboxed(const std::string& user, bool daemonFlag);
  /// The roles that the user has, or all roles for the user "all users".
  /// @throws SystemException "could not get roles"
  ADObjectList samGetUserRoles(const std::string& user, bool daemonFlag);
  /// For a user of this host. For "all users" the ids are ignored.
  ADObjectList samGetUserRolesLocal(const std::string& user, unsigned int uid, unsigned int gid);
  /// The DNS and the short name of the domain to which `name` belongs; both are set on success only. Only the
  /// daemon interprets `daemonOptions`. Sent once.
  ValidationResult mapDomain(const std::string& name, std::string& dnsName, std::string& shortName,
                             unsigned int daemonOptions);
  /// The DNS name and the short name of that domain. Sent once. @throws IPCException the daemon's failure
  std::string getADDomain(const std::string& name);
  std::string getNtlmDomain(const std::string& name);
  /// Sets this connection's name in the daemon; a new connection has none.
  ValidationResult setSessionID(const std::string& id);
  /// The daemon's health, from the last reply or, with `refresh`, as of now. Returns 0, or
  /// VR_DAEMON_NOT_RUNNING with nothing set.
  int systemHealthInfo(bool refresh, ValidationResult& health, int& value1, int& value2, std::string& text);
  /// Always 0; the daemon is not asked.
  int getFipsMode();

 private:
  friend class CallScope;
  friend class Exchange;
  friend class SessionHold;

  bool isConnectionGood(time_t now, pid_t pid);
  bool isConnectionGoodForCall(time_t now, pid_t pid);
  void connect(time_t now, pid_t pid);
  void checkPeer();
  void closeConnection();
  void sendRequest(IPCRequest& request);
  void receiveReply(IPCReply& reply);
  void exchange(IPCRequest& request, IPCReply& reply);
  bool hasDaemonMissedRequest() const;
  bool maySendAgain() const;
  void sendAgain(IPCRequest& request, IPCReply& reply, bool authenticate);
  std::string refreshPolicy(Exchange& exchange, const char* done);

  int m_socket = -1;
  pid_t m_pid;
  ino_t m_socketInode = 0;
  time_t m_lastUsed = 0;
  std::string m_socketPath;
  bool m_authenticateProcess;
  bool m_processAuthenticated = false;
  int m_statusDetail = 0;
  std::string m_statusMessage;
  int m_statusCode = 0;
  ValidationResult m_healthResult = VR_NO_REPLY_YET;
  int m_healthValue1 = 0;
  int m_healthValue2 = 0;
  std::string m_healthMessage;
  bool m_midExchange = false;          // the position in the stream is unknown
  unsigned long m_forkGeneration = 0;  // these three: as they were at connect
  uid_t m_effectiveUid = 0;
  gid_t m_effectiveGid = 0;
  std::optional<uid_t> m_trustedPeer;  // empty: any user
  std::atomic<pthread_t> m_holder{};   // the thread with a running operation
  ValidationResult m_lastResult = VR_NO_REPLY_YET;
  bool m_isStatusReadable = false;  // whether the last reply began with a result
  CallProgress* m_call = nullptr;   // of the client that uses the session now
};

}  // namespace vesk

/// Asks the daemon for the canonical service principal of a host's service, for Kerberos libraries.
/// `context` is ignored. `host` may be null for this host, `service` for "host". `type` is a Kerberos name
/// type: 0 (unknown) or 3 (service and host). `out` receives the principal and a terminating NUL; the caller
/// provides enough room. Returns 1 on success, an errno if this host has no name, or a Kerberos error:
/// 0x96c73ada for another type, 0x96c73ad8 if there is no such principal, 0x96c73af5 if there is none but DNS
/// may be tried, or if the daemon cannot be reached.
extern "C" FOKRAZO_API int velmora_sname_to_principal(void* context, const char* host, const char* service,
                                                      int type, char* out);
