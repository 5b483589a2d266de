/// The directory that a daemon serves: all operations of its clients, without sockets and messages.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include <fokrazo/adobject.h>
#include <fokrazo/guid.h>
#include <fokrazo/session_types.h>
#include <fokrazo/shredder.h>
#include <fokrazo/sid.h>
#include "daemon/status.h"

namespace vesk {
class ADSerializer;
}

namespace brondalt {

/// A serialized directory object; never null unless an operation says so. Caches and replies may share it, so
/// it must not be changed.
using Object = std::shared_ptr<vesk::ADSerializer>;
using Objects = std::vector<Object>;

/// The client that makes a request.
struct Caller {
  unsigned uid = UINT32_MAX;  ///< the peer's effective ids when it connected; UINT32_MAX if unknown
  unsigned gid = UINT32_MAX;
  bool mayAdminister = false;  ///< root, or the daemon's own user
  std::string sessionId;       ///< the client's name for its connection; only for logs
};

/// The objects that a lookup or a listing considers.
struct Selection {
  vesk::DSObjectType type;  ///< DSShadow means accounts with a Unix profile, DSAny accounts and groups
  bool isUnixOnly;          ///< only objects with a Unix profile
  bool isFresh;             ///< ask the directory before any cache
  bool withMembership;      ///< with _groupSidList or _Members
};

/// A name in any form (Unix, account, user principal, DOMAIN\name, DN), a GUID, a Unix id or a SID.
using LookupKey = std::variant<std::string, vesk::Guid, uint32_t, vesk::SID>;

/// One LDAP search.
struct SearchQuery {
  std::string domain;                   ///< empty for the daemon's own
  std::string base;                     ///< empty for the domain, and with ScopeBase for the root entry
  std::string filter;                   ///< empty for all entries
  std::vector<std::string> attributes;  ///< empty for all
  vesk::LdapSearchScopeType scope;      ///< as sent by the client; may be any number
};

/// The kind of group names.
enum class NameForm { Unix, Directory, Either };

/// The two names of a domain.
struct DomainNames {
  std::string dns;
  std::string netbios;
};

/// A new account. Empty fields are not set.
struct NewUser {
  std::string name;
  vesk::Shredder password;
  std::string uid;
  std::string gid;
  std::string fullName;
  std::string home;
  std::string shell;
  std::string container;  ///< DN; empty for the domain's default
};

/// The administrator who authorizes a change; without a name the caller's own rights decide.
struct Administrator {
  std::string name;
  vesk::Shredder password;
};

/// The daemon's health. Part of every reply.
struct Health {
  vesk::ValidationResult result = vesk::VR_SUCCESS;
  int first = 0;  ///< two numbers, defined by the back end
  int second = 0;
  std::string message;
};

/// An open listing of one client. Destroyed when the client ends it, disconnects, or gets no answer in time,
/// possibly while an answer is outstanding, but never before next() has returned.
class Listing {
 public:
  virtual ~Listing() = default;
  /// The next object of the selection, whose type is the listing's; null at the end. `done` may call next()
  /// again. If called after next() has returned, it may destroy this object, so it must not be stored in it
  /// then.
  virtual void next(const Selection& selection, Done<Object> done) = 0;
};

/// An open search of one client. Destroyed after its last page, or as a Listing is.
class Search {
 public:
  virtual ~Search() = default;
  /// The next objects, at most `limit`; none at the end. `done` is as in Listing::next.
  virtual void next(size_t limit, Done<Objects> done) = 0;
};

/// The operations of a directory. Each calls its completion (daemon/status.h) with a result. By default each
/// answers "not supported"; a back end overrides those it has. Arguments are valid until the operation
/// returns. If an operation throws instead of completing, the client gets "system error".
/// Thread-safety: called only on the loop's thread. An operation that could block must run on another thread
/// and complete later.
class Backend {
 public:
  virtual ~Backend() = default;

  virtual Health health() const = 0;

  // Lookups.
  virtual void find(const Caller& caller, const Selection& selection, const LookupKey& key,
                    Done<Object> done);
  virtual void openListing(const Caller& caller, vesk::DSObjectType type,
                           Done<std::unique_ptr<Listing>> done);

  // Searches.
  /// All results, or at most `limit` if that is not 0.
  virtual void search(const Caller& caller, const SearchQuery& query, size_t limit, Done<Objects> done);
  virtual void openSearch(const Caller& caller, const SearchQuery& query, Done<std::unique_ptr<Search>> done);
  /// One entry by its DN; the root entry by the empty one.
  virtual void fetch(const Caller& caller, const std::string& domain, const std::string& dn,
                     const std::vector<std::string>& attributes, Done<Object> done);

  // Logins. Success means that the user is authenticated and may log in.
  /// Whether the calling process may send requests; succeeds by default.
  virtual void authenticateProcess(const Caller& caller, DoneStatus done);
  virtual void validatePassword(const std::string& user, const vesk::Shredder& password, DoneStatus done);
  virtual void validateKerberos(const std::string& principal, const vesk::Shredder& token, Done<Object> done);
  virtual void ntlmChallenge(const std::string& data, Done<std::string> done);
  /// `challenge` is the last result of ntlmChallenge for this client; empty if there is none or it has been
  /// used.
  virtual void validateNtlm(const std::string& challenge, const vesk::Shredder& token, Done<Object> done);
  virtual void samLogon(const std::string& user, const std::string& domain, const vesk::Shredder& token,
                        Done<std::string> done);
  /// Success if the user is in one of the groups, nested ones included; VR_NOT_GROUP_MEMBER if not.
  virtual void checkMembership(const std::string& user, const std::vector<std::string>& groups, NameForm form,
                               DoneStatus done);
  virtual void beginLogin(const std::string& user, DoneStatus done);
  virtual void endLogin(const std::string& user, DoneStatus done);
  /// The number of renewed credentials.
  virtual void renewCredentials(const std::string& user, Done<int> done);

  // Passwords and accounts.
  virtual void changePassword(const std::string& user, const vesk::Shredder& old,
                              const vesk::Shredder& wanted, DoneStatus done);
  /// As changePassword, with the NT status of the result as its detail.
  virtual void samChangePassword(const std::string& user, const vesk::Shredder& old,
                                 const vesk::Shredder& wanted, DoneStatus done);
  virtual void setPassword(const Caller& caller, const std::string& user, const vesk::Shredder& wanted,
                           const Administrator& administrator, DoneStatus done);
  /// An empty `computer` means this host.
  virtual void setMachinePassword(const Caller& caller, const std::string& computer,
                                  const vesk::Shredder& wanted, const Administrator& administrator,
                                  DoneStatus done);
  virtual void addUser(const Caller& caller, const NewUser& user, const Administrator& administrator,
                       DoneStatus done);

  // Administration.
  /// `object` may be null; `selectors` are FLUSH_ bits.
  virtual void flushCache(const Caller& caller, vesk::ADObject object, unsigned selectors,
                          const std::string& key, DoneStatus done);
  virtual void dumpCache(const Caller& caller, const std::vector<std::string>& arguments, DoneStatus done);
  virtual void updateUserPolicy(const Caller& caller, const std::string& user, DoneStatus done);
  virtual void updateMachinePolicy(const Caller& caller, DoneStatus done);
  virtual void networkChanged(const Caller& caller, DoneStatus done);
  /// Human-readable text; `what` 0 means everything.
  virtual void readState(const Caller& caller, int what, Done<std::string> done);
  virtual void servicePrincipal(const std::string& service, Done<std::string> done);
  /// The domain of that name, or the one to which an object of that name belongs.
  virtual void findDomain(const std::string& name, Done<DomainNames> done);

  // Roles.
  virtual void hasRoles(Done<int> done);
  virtual void isSandboxed(const std::string& user, Done<int> done);
  virtual void allRoles(Done<Objects> done);
  virtual void rolesOf(const std::string& user, Done<Objects> done);
  /// As rolesOf, for a user of this host, who need not be in the directory.
  virtual void rolesOfLocal(const std::string& user, const std::string& uid, const std::string& gid,
                            Done<Objects> done);
};

}  // namespace brondalt
