/// A program's side of the daemon: one member function for each thing that the daemon can do.
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

/// A session with the daemon, over one connection that it opens when it first needs one:
///
///   LocalRpcSession session("/var/velmora/daemon", false, false);
///   session.setTrustedPeer(0);  // before a secret is sent: talk to root's daemon or to nobody
///   boost::shared_ptr<User> user = session.getUser("lquispe", 0);
///
/// Every operation sends one request and waits for its reply, for at most `lrpc.timeout` seconds in each
/// step. Unless its comment says "sent once", a request whose exchange fails is sent again on a new
/// connection, so the daemon may carry it out twice. What execute and executeWithRetry throw, every operation
/// throws; its own comment lists only what comes on top. After an operation the status fields hold what its
/// reply said. Arguments and values whose meaning is not given here belong to the daemon and are passed on
/// unchanged.
///
/// The connection. Its descriptor is above 2 and close-on-exec from birth. Before each request the session
/// checks whether it can still be used, and otherwise opens a new one: see reConnect.
///
/// Thread-safety: one thread at a time, without a lock; two threads need two sessions. A thread that uses a
/// session during another thread's operation gets a SystemException (EBUSY) "session in use by another
/// thread", and the operation under way is not disturbed.
/// Fork: the child's copy of the descriptor is closed at once, and its first request opens a connection of
/// its own. The parent's connection goes on as before. If another thread was using the session during the
/// fork, the child cannot use it.
class FOKRAZO_API LocalRpcSession {
 public:
  /// With `connectNow` tries to connect at once, and logs a warning if the daemon is away. With
  /// `authenticateProcess` the daemon checks this process on each new connection: see authenticateProcess.
  LocalRpcSession(const std::string& socketPath, bool connectNow, bool authenticateProcess);
  /// Closes the connection.
  ~LocalRpcSession();
  LocalRpcSession(const LocalRpcSession&) = delete;
  LocalRpcSession& operator=(const LocalRpcSession&) = delete;

  // --- The connection ---

  /// From now on talks only to a daemon whose effective user is `uid`, 0 for root. Each new connection is
  /// checked, those of a second attempt included, before anything is sent on it; the present one is closed.
  /// The user is the one that the daemon's process had when it began to listen (SO_PEERCRED).
  /// An operation that meets anybody else throws IOException (EACCES) "ipc socket peer has uid 1000 instead
  /// of 0" and sends nothing. To have the very first connection checked, construct with `connectNow` false.
  void setTrustedPeer(uid_t uid);
  /// Makes sure of a connection that can carry a request. Every operation begins with this. A new connection
  /// replaces one that
  /// - has been idle for more than `lrpc.session.timeout` seconds,
  /// - was opened before a fork, or under another effective user or group,
  /// - is no longer what was opened, because the program has closed or reused the descriptor,
  /// - was left in the middle of an exchange, by whatever exception,
  /// - has something to read, or has ended: what comes unasked answers no request.
  /// With `authenticate` a new connection is authenticated, if the session wants that.
  /// @throws IOException the daemon cannot be reached, or is not the trusted peer
  /// @throws ConnectionBrokenException a new connection brought more than was asked for
  /// @throws what authenticateProcess throws
  void reConnect(bool authenticate);
  /// Has the daemon check this process, unless it has done so on this connection; from now on also on each
  /// new connection, before its first request. If the daemon refuses, the connection stays open and is not
  /// authenticated: later requests go over it, and the daemon decides about each. dropConnection makes the
  /// next operation try again.
  /// @throws SystemException the daemon refuses
  void authenticateProcess();
  /// Close the connection, if there is one. A descriptor that the program has closed and reused stays open.
  void lostConnection();
  void dropConnection();
  /// The descriptor of the connection, -1 while there is none. The session owns it.
  int socket() const { return m_socket; }
  /// Whether the daemon has checked this process on this connection.
  bool processAuthenticated() const { return m_processAuthenticated; }

  // --- The exchange of a request that the caller has built ---

  /// Sends the request once and receives its reply. With `authenticate` a new connection is authenticated
  /// first, if the session wants that.
  /// @throws ConnectionBrokenException the peer is gone; the connection is closed
  /// @throws TimeoutException the peer is silent; the next request goes over a new connection
  /// @throws SystemException the reply's result is not success; rc() is that result
  /// @throws IOException the daemon cannot be reached, or its reply cannot be read
  void execute(IPCRequest& request, IPCReply& reply, bool authenticate);
  /// As execute, but if the exchange fails for any reason, sends the same bytes once more on a new
  /// connection. A daemon that cannot be reached is not tried again. After a second failure the connection is
  /// closed.
  /// @throws what execute throws, from the last attempt
  void executeWithRetry(IPCRequest& request, IPCReply& reply, bool authenticate);
  /// execute, with authentication.
  void lrpc(IPCRequest& request, IPCReply& reply);

  // --- The status block of the last reply ---

  /// Reads the status block, the eight fields that begin the body of nearly every reply, into the status
  /// fields, and returns the first of them. Fields that the reply lacks read as VR_SYSTEM_ERROR, 0 or empty.
  /// Throws nothing for what was received.
  ValidationResult updateVRErrInfo(IPCReply& reply);
  /// The text of a result; "unexpected error" for a number that is none.
  static std::string errorString(ValidationResult value);

  /// Qualifies a result, such as END_OF_LIST.
  int statusCode() const { return m_statusCode; }
  /// Qualifies a result further; the NT status, where there is one.
  int statusDetail() const { return m_statusDetail; }
  /// A text for people.
  const std::string& statusMessage() const { return m_statusMessage; }
  /// The daemon's own condition, with two numbers and a text of its own; VR_NO_REPLY_YET before the first
  /// reply.
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
  // `flags` are UNIX_ONLY, CHECK_AD_FIRST and GROUP_MEMBERSHIP. Lookups by id and getShadow ignore UNIX_ONLY,
  // getShadow ignores GROUP_MEMBERSHIP too. The name NEXT_ENTRY asks for the next entry of the open listing
  // of that kind, and is sent once.

  /// Return an empty object if there is none of that name. @throws IPCException the daemon's failure
  ADObject getObject(const std::string& name, DSObjectType type, int flags);
  ADObject getUserObj(const std::string& name, int flags);
  ADObject getGroupObj(const std::string& name, int flags);
  /// Return an empty object if there is none, and on any failure of the daemon.
  ADObject getUserObj(int uid, int flags);
  ADObject getGroupObj(int gid, int flags);

  /// @throws NotFoundException "User not found", "Group not found"
  /// @throws IPCException by name alone: the daemon's failure
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

  /// The forms for a listing.
  /// @throws EndOfListException "End of list"
  /// @throws NotFoundException "User not found", "Group not found"
  /// @throws IPCException the daemon's failure
  boost::shared_ptr<User> getUser2(const std::string& name, int flags);
  boost::shared_ptr<Group> getGroup2(const std::string& name, int flags);
  /// @throws NotFoundException "User not found", on any failure and at the end of a listing
  boost::shared_ptr<User> getShadow(const std::string& name, int flags);

  // --- Listings: the daemon keeps one place for each kind and connection ---
  // These start and end a listing; a lookup of NEXT_ENTRY takes its next entry. A new connection has no
  // listing open. All return true on failure. What `daemonFlag` means is the daemon's alone.

  bool startListUser();
  bool startListGroup(bool daemonFlag);
  bool startListShadow();
  /// Sent once.
  bool endListUser();
  bool endListGroup();
  bool endListShadow();

  // --- LDAP ---
  // `domain` is a DNS or short name, empty for the daemon's own domain. `attributes`, ended by a null
  // pointer, are the ones wanted; null stands for all. `limit` is the most objects, 0 for all; for
  // ldapPagedSearch, the objects of a page. What `daemonFlag` means is the daemon's alone.
  // @throws IPCException the daemon's failure

  ADObjectList ldapSearch(const std::string& domain, const std::string& baseDn, const std::string& filter,
                          const char** attributes, LdapSearchScopeType scope, int limit, bool daemonFlag);
  /// The handle refers to this session, which must outlive it.
  PagedSearchHandle ldapPagedSearch(const std::string& domain, const std::string& baseDn,
                                    const std::string& filter, const char** attributes,
                                    LdapSearchScopeType scope, int limit, bool daemonFlag);
  /// One object; an empty `dn` stands for the root of the directory.
  ADObject ldapFetch(const std::string& domain, const std::string& dn, const char** attributes,
                     bool daemonFlag);

  // --- Authentication ---
  // Passwords and tokens travel as they are: call setTrustedPeer first. The caller wipes its own copies
  // (<fokrazo/shredder.h>); the library wipes the messages. What `daemonFlag` means is the daemon's alone.

  ValidationResult validatePlainTextUser(const std::string& user, const Shredder& password, bool daemonFlag);
  /// The form for login modules: opens a connection for this request alone, and sends it once. No answer to
  /// an earlier question can be taken for the answer to this one, and with setTrustedPeer the password goes
  /// to a peer that has just been checked, once.
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
  /// Tell the daemon of a login or logout; true on failure. Sent once.
  bool userLogin(const std::string& user);
  bool userLogout(const std::string& user);
  /// `count` is set on success alone.
  ValidationResult renewCredentials(const std::string& user, int& count);

  // --- Passwords, accounts and the machine ---
  // A change that the daemon refuses is a result, not an exception. Sent once, unless the comment says
  // otherwise. An administrator who has to prove it gives name and password.

  ValidationResult changePassword(const std::string& user, const Shredder& oldPassword,
                                  const Shredder& newPassword, bool daemonFlag);
  ValidationResult setPassword(const std::string& user, const Shredder& password,
                               const std::string& adminUser, const Shredder& adminPassword);
  ValidationResult setPasswordKrb5(const std::string& user, const Shredder& password);
  /// Strings that are empty are left to the daemon; `container` is the DN under which the user is made.
  ValidationResult addUser(const std::string& user, const Shredder& password, const std::string& uid,
                           const std::string& gid, const std::string& fullName, const std::string& home,
                           const std::string& shell, const std::string& container,
                           const std::string& adminUser, const Shredder& adminPassword);
  ValidationResult addUserKrb5(const std::string& user, const Shredder& password, const std::string& uid,
                               const std::string& gid, const std::string& fullName, const std::string& home,
                               const std::string& shell, const std::string& container);
  /// May be sent twice. Without a name, the password of this machine's account.
  ValidationResult setMachinePassword(const std::string& computer, const Shredder& password,
                                      const std::string& adminUser, const Shredder& adminPassword);
  ValidationResult setMachinePassword(const Shredder& password);
  /// May be sent twice. `ntStatus` and `errorText` are set whatever the result, `sessionKey` on success
  /// alone.
  ValidationResult netLogonSamLogon(const std::string& user, const std::string& domain,
                                    const std::string& token, unsigned int daemonOption,
                                    std::string& sessionKey, int& ntStatus, std::string& errorText);
  /// May be sent twice. `ntStatus` and `errorText` are set whatever the result. What the last two strings
  /// mean is the daemon's alone.
  ValidationResult samChangeUserPassword2(const std::string& user, const std::string& newPassword,
                                          const std::string& oldPassword, const std::string& daemonText1,
                                          const std::string& daemonText2, int& ntStatus,
                                          std::string& errorText);

  // --- Cache, policy, health and roles ---

  /// Flush one key, one object, or what the FLUSH_ selectors say.
  ValidationResult flushCache(const std::string& key);
  ValidationResult flushCache(ADObject& object);
  ValidationResult flushCache(unsigned int selectors);
  /// Tells the daemon that the network has changed.
  ValidationResult networkChange();
  /// Return a text for people. Sent once.
  /// @throws SystemException the refresh failed; the message is the daemon's, rc() its detail or 9
  std::string updateUserPolicy(const std::string& user);
  std::string updateMachinePolicy();
  /// The part of the daemon's state that `what` numbers. @throws SystemException "could not get sysinfo"
  std::string getSystemInfo(unsigned int what);
  /// For those who work on the daemon, which alone knows what the strings mean.
  ValidationResult dumpCache(const std::string& daemonText1, const std::string& daemonText2,
                             const std::string& daemonText3);
  /// @throws SystemException "could do sandbox test"
  bool samEnabled();
  bool samIsSandboxed(const std::string& user, bool daemonFlag);
  /// The roles that the user has, or all roles for the user "all users".
  /// @throws SystemException "could not get roles"
  ADObjectList samGetUserRoles(const std::string& user, bool daemonFlag);
  /// For a user of this host. The user "all users" needs no ids, and they are not sent.
  ADObjectList samGetUserRolesLocal(const std::string& user, unsigned int uid, unsigned int gid);
  /// The DNS and the short name of the domain to which `name` belongs; both are set on success alone. What
  /// `daemonOptions` mean is the daemon's alone. Sent once.
  ValidationResult mapDomain(const std::string& name, std::string& dnsName, std::string& shortName,
                             unsigned int daemonOptions);
  /// The DNS name and the short name of that domain. Sent once. @throws IPCException the daemon's failure
  std::string getADDomain(const std::string& name);
  std::string getNtlmDomain(const std::string& name);
  /// Names this connection for the daemon. A new connection does not have the name.
  ValidationResult setSessionID(const std::string& id);
  /// The daemon's condition, as the last reply told it or, with `refresh`, as it is now. Returns 0, or
  /// VR_DAEMON_NOT_RUNNING with nothing set.
  int systemHealthInfo(bool refresh, ValidationResult& health, int& value1, int& value2, std::string& text);
  /// 0; the daemon is not asked.
  int getFipsMode();

 private:
  friend class SessionHold;

  bool isConnectionGood(time_t now, pid_t pid);
  void connect(time_t now, pid_t pid);
  void checkTrustedPeer();
  void closeConnection();
  void exchange(IPCRequest& request, IPCReply& reply);
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
  unsigned long m_forkGeneration = 0;  // this and the ids: of the process when it connected
  uid_t m_effectiveUid = 0;
  gid_t m_effectiveGid = 0;
  std::optional<uid_t> m_trustedPeer;  // none: anybody
  std::atomic<pthread_t> m_holder{};   // the thread whose operation is under way
};

}  // namespace vesk

/// Asks the daemon for the canonical service principal of a host's service, for Kerberos libraries.
/// `context` is ignored. `host` may be null for this host, `service` for "host". `type` is a Kerberos name
/// type: 0 (unknown) or 3 (service and host). `out` takes the principal with its terminator; the caller
/// provides enough room.
/// Returns 1 on success, an errno if this host has no name, or a Kerberos error: 0x96c73ada for another type,
/// 0x96c73ad8 if there is no such principal, 0x96c73af5 if there is none but DNS may be asked, or the daemon
/// cannot be.
extern "C" FOKRAZO_API int velmora_sname_to_principal(void* context, const char* host, const char* service,
                                                      int type, char* out);
