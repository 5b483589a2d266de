/// The client's side of the daemon: one operation for each thing that the daemon can do.
#pragma once

#include <sys/types.h>

#include <ctime>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include <fokrazo/export.h>
#include <fokrazo/session_types.h>
#include <fokrazo/validation_result.h>

namespace vesk {

class ADObject;
class ADObjectList;
class Group;
class Guid;
class IPCReply;
class IPCRequest;
class PagedSearchHandle;
class SID;
class Shredder;
class User;
class VeskObj;

/// One connection to the daemon, opened when first needed: one request, then its reply.
///
/// Every operation is one exchange, and blocks for at most `lrpc.timeout` seconds in each step. Those marked
/// "sent once" are made by execute; all others by executeWithRetry, so that the daemon may see them twice.
/// What the exchange throws is told there and holds for every operation; what is told with an operation comes
/// on top. The status fields are what the reply of the last operation said.
///
/// Strings and numbers that have no meaning here are the daemon's and are passed on as they are.
///
/// Thread-safety: one thread at a time, no lock; two threads take two sessions.
/// Fork: the child's first request opens its own connection; the parent's stays as it is.
class FOKRAZO_API LocalRpcSession {
 public:
  /// With `connectNow` tries to connect at once; if the daemon is away, that is only logged. With
  /// `authenticateProcess` the daemon checks this process on each new connection.
  LocalRpcSession(const std::string& socketPath, bool connectNow, bool authenticateProcess);
  ~LocalRpcSession();
  LocalRpcSession(const LocalRpcSession&) = delete;
  LocalRpcSession& operator=(const LocalRpcSession&) = delete;

  // --- The exchange ---

  /// Makes one exchange, without a second attempt.
  /// @throws ConnectionBrokenException the peer is gone; the connection is closed.
  /// @throws TimeoutException the peer is silent; this connection carries no further request.
  /// @throws SystemException the reply's result is not success; rc() is that result.
  /// @throws IOException the daemon cannot be reached, or its reply cannot be read.
  void execute(IPCRequest& request, IPCReply& reply, bool authenticate);
  /// As execute, but if the exchange fails in any way, sends the same bytes once more on a new connection.
  /// Not reaching the daemon is never tried again. After a second failure the connection is closed.
  /// @throws as execute, from the last attempt
  void executeWithRetry(IPCRequest& request, IPCReply& reply, bool authenticate);
  /// The exchange of a request that the caller has built; sent once, with authentication.
  void lrpc(IPCRequest& request, IPCReply& reply);

  /// Leaves a connection that can be used. A new one is made if there is none, if the present one has been
  /// idle for more than `lrpc.session.timeout` seconds, has been inherited by a fork, is no longer what was
  /// opened, or was left in the middle of an exchange. With `authenticate` a new connection is authenticated,
  /// if the session wants that.
  /// @throws IOException the daemon cannot be reached; what authenticateProcess throws
  void reConnect(bool authenticate);
  /// Has the daemon check this process, unless it has done so on this connection, and from now on on each new
  /// one.
  /// @throws SystemException the daemon refuses.
  void authenticateProcess();
  /// Close the connection, if there is one. A descriptor that the program has closed and reused stays open.
  void lostConnection();
  void dropConnection();

  // --- The status block of the last reply ---

  /// Reads the status block, eight fields that open the body of nearly every reply, into the status fields.
  /// Returns the first field. What is not there reads as VR_SYSTEM_ERROR, 0 or empty. Never throws for what
  /// was received.
  ValidationResult updateVRErrInfo(IPCReply& reply);
  /// The text of a result; "unexpected error" for a number that is none.
  static std::string errorString(ValidationResult value);

  /// Qualifies a result, such as END_OF_LIST.
  int statusCode() const { return m_statusCode; }
  /// Qualifies a result further; the NT status, where there is one.
  int statusDetail() const { return m_statusDetail; }
  /// A text for people.
  const std::string& statusMessage() const { return m_statusMessage; }
  /// The daemon's own condition, with two numbers and a text of its own; 48 before the first reply.
  ValidationResult healthResult() const { return m_healthResult; }
  int healthValue1() const { return m_healthValue1; }
  int healthValue2() const { return m_healthValue2; }
  const std::string& healthMessage() const { return m_healthMessage; }

  /// The descriptor of the connection, -1 while there is none.
  int socket() const { return m_socket; }
  /// Whether the daemon has checked this process on this connection.
  bool processAuthenticated() const { return m_processAuthenticated; }

  // --- The daemon itself ---

  /// Returns if the daemon answers.
  void ping();
  /// Ends the daemon. Sent once.
  void stop();

  // --- Lookups of one object ---
  // `flags` are UNIX_ONLY, CHECK_AD_FIRST and GROUP_MEMBERSHIP; ids and getShadow ignore UNIX_ONLY, and
  // getShadow GROUP_MEMBERSHIP. The name NEXT_ENTRY asks for the next entry of the open listing of that kind
  // and is sent once.

  /// An empty object if there is none of that name. @throws IPCException the daemon's failure
  ADObject getObject(const std::string& name, DSObjectType type, int flags);
  ADObject getUserObj(const std::string& name, int flags);
  ADObject getGroupObj(const std::string& name, int flags);
  /// An empty object if there is none, or on any failure of the daemon.
  ADObject getUserObj(int uid, int flags);
  ADObject getGroupObj(int gid, int flags);

  /// @throws NotFoundException "User not found", "Group not found"
  /// @throws IPCException by name alone: the daemon's failure
  boost::shared_ptr<User> getUser(const std::string& name, int flags);
  boost::shared_ptr<Group> getGroup(const std::string& name, int flags);
  boost::shared_ptr<User> getUser(int uid, int flags);
  boost::shared_ptr<Group> getGroup(int gid, int flags);
  /// @throws NotFoundException on any failure: "User not found", for a group by SID "Object not found", by
  /// GUID "Group not found"
  /// @throws BadDataException a null SID
  boost::shared_ptr<User> getUser(const SID& sid, int flags);
  boost::shared_ptr<Group> getGroup(const SID& sid, int flags);
  boost::shared_ptr<User> getUser(const Guid& guid, int flags);
  boost::shared_ptr<Group> getGroup(const Guid& guid, int flags);
  /// A User for a user or a computer, a Group for a group.
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

  // --- Listings: one cursor of the daemon for each kind and connection ---
  // Started here, advanced by a lookup of NEXT_ENTRY. A connection that is lost meanwhile ends the listing.
  // All return true on failure.

  bool startListUser();
  bool startListGroup(bool flag);
  bool startListShadow();
  /// Sent once.
  bool endListUser();
  bool endListGroup();
  bool endListShadow();

  // --- LDAP ---
  // `s1`, `s2` and `s3` are a domain, a DN and a filter, where the daemon takes them as the stand-in does.
  // `scope` is 0 the base, 1 one level, 2 the subtree. `limit` is the most objects, 0 for all; for
  // ldapPagedSearch, the objects of a page. `attributes` ends with null and may be null.
  // @throws IPCException the daemon's failure

  ADObjectList ldapSearch(const std::string& s1, const std::string& s2, const std::string& s3,
                          const char** attributes, LdapSearchScopeType scope, int limit, bool flag);
  /// The handle refers to this session.
  PagedSearchHandle ldapPagedSearch(const std::string& s1, const std::string& s2, const std::string& s3,
                                    const char** attributes, LdapSearchScopeType scope, int limit, bool flag);
  /// One object.
  ADObject ldapFetch(const std::string& s1, const std::string& s2, const char** attributes, bool flag);

  // --- Authentication ---
  // A password travels as it is. Its caller wipes the text that it gives (<fokrazo/shredder.h>), the message
  // its own.

  ValidationResult validatePlainTextUser(const std::string& user, const Shredder& password, bool flag);
  /// @throws SystemException "failed to validate Kerberos user"
  boost::shared_ptr<User> validateKerberosUser(const std::string& first, const std::string& second);
  /// @throws SystemException "failed to get NLTM challenge"
  std::string getNtlmChallenge(const std::string& data);
  /// Sent once. @throws SystemException "failed to validate NTLM user"
  boost::shared_ptr<User> validateNtlmUser(const std::string& data);
  /// `nameFlags` are UNIX_NAME and WINDOWS_NAME: how the groups are named.
  ValidationResult validateUserGroup(const std::string& user, const std::vector<std::string>& groups,
                                     bool flag, int nameFlags);
  /// The canonical form of service/host; the host goes out in lower case.
  /// @throws NotFoundException "failed to get canonicalized service principal name"
  std::string getServicePrincipal(const std::string& host, const std::string& service);
  /// Tell the daemon of a login or logout; true on failure. Sent once.
  bool userLogin(const std::string& user);
  bool userLogout(const std::string& user);
  /// `count` is set on success alone.
  ValidationResult renewCredentials(const std::string& user, int& count);

  // --- Passwords, accounts and the machine ---
  // A refused change is a result, not an exception. Sent once, unless told otherwise.

  ValidationResult changePassword(const std::string& user, const Shredder& oldPassword,
                                  const Shredder& newPassword, bool flag);
  ValidationResult setPassword(const std::string& user, const Shredder& password,
                               const std::string& adminUser, const Shredder& adminPassword);
  ValidationResult setPasswordKrb5(const std::string& user, const Shredder& password);
  ValidationResult addUser(const std::string& user, const Shredder& password, const std::string& a1,
                           const std::string& a2, const std::string& a3, const std::string& a4,
                           const std::string& a5, const std::string& a6, const std::string& adminUser,
                           const Shredder& adminPassword);
  ValidationResult addUserKrb5(const std::string& user, const Shredder& password, const std::string& a1,
                               const std::string& a2, const std::string& a3, const std::string& a4,
                               const std::string& a5, const std::string& a6);
  /// May be sent twice.
  ValidationResult setMachinePassword(const std::string& user, const Shredder& password,
                                      const std::string& adminUser, const Shredder& adminPassword);
  ValidationResult setMachinePassword(const Shredder& password);
  /// May be sent twice. `ntStatus` and `errorText` are set whatever the result, `result` on success alone.
  ValidationResult netLogonSamLogon(const std::string& user, const std::string& s2, const std::string& s3,
                                    unsigned int n, std::string& result, int& ntStatus,
                                    std::string& errorText);
  /// May be sent twice. `ntStatus` and `errorText` are set whatever the result.
  ValidationResult samChangeUserPassword2(const std::string& user, const std::string& s2,
                                          const std::string& s3, const std::string& s4, const std::string& s5,
                                          int& ntStatus, std::string& errorText);

  // --- Cache, policy, health and roles ---

  /// Flush one key, one object, or what the FLUSH_ selectors say.
  ValidationResult flushCache(const std::string& key);
  ValidationResult flushCache(ADObject& object);
  ValidationResult flushCache(unsigned int selectors);
  /// Tells the daemon that the network has changed.
  ValidationResult networkChange();
  /// A text for people. Sent once.
  /// @throws SystemException the refresh failed; the message is the daemon's, rc() its detail or 9.
  std::string updateUserPolicy(const std::string& user);
  std::string updateMachinePolicy();
  /// @throws SystemException "could not get sysinfo"
  std::string getSystemInfo(unsigned int what);
  /// For whoever works on the daemon; what the strings say is its own.
  ValidationResult dumpCache(const std::string& s1, const std::string& s2, const std::string& s3);
  /// @throws SystemException "could do sandbox test"
  bool samEnabled();
  bool samIsSandboxed(const std::string& user, bool flag);
  /// @throws SystemException "could not get roles"
  ADObjectList samGetUserRoles(const std::string& user, bool flag);
  /// For the user "all users" the ids do not count.
  ADObjectList samGetUserRolesLocal(const std::string& user, unsigned int uid, unsigned int gid);
  /// `first` and `second` are set on success alone. Sent once.
  ValidationResult mapDomain(const std::string& name, std::string& first, std::string& second,
                             unsigned int options);
  /// Sent once. @throws IPCException the daemon's failure
  std::string getADDomain(const std::string& name);
  std::string getNtlmDomain(const std::string& name);
  /// Belongs to the connection: it is not set again on a new one.
  ValidationResult setSessionID(const std::string& id);
  /// The daemon's condition, as the last reply told it or, with `refresh`, as it is now. 0, or
  /// VR_DAEMON_NOT_RUNNING with nothing set.
  int systemHealthInfo(bool refresh, ValidationResult& health, int& a, int& b, std::string& text);
  /// 0; the daemon is not asked.
  int getFipsMode();

 private:
  bool isConnectionGood(time_t now, pid_t pid);
  bool ownsSocket(ino_t& inode) const;
  void connect(time_t now, pid_t pid);
  void exchange(IPCRequest& request, IPCReply& reply);
  void sendAgain(IPCRequest& request, IPCReply& reply, bool authenticate);
  std::string refreshPolicy(IPCRequest& request, const char* done);

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
  ValidationResult m_healthResult = static_cast<ValidationResult>(48);
  int m_healthValue1 = 0;
  int m_healthValue2 = 0;
  std::string m_healthMessage;
  bool m_midExchange = false;  // the position in the stream is unknown
};

/// The bytes of a file, as many as it has when the call begins.
/// @throws SystemException "OS call failed" with the system's text
FOKRAZO_API std::string readFile(std::string path);

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
