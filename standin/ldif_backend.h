/// A daemon's back end that serves LDIF files.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "daemon/backend.h"
#include "daemon/service.h"
#include "standin/accounts.h"
#include "standin/attribute_map.h"
#include "standin/directory.h"

namespace standin {

/// Answers every operation immediately, from memory. Changes last as long as this object. There is no
/// cryptography: the password itself replaces what a client would derive from it. A Kerberos token is the
/// principal's password. An NTLM token is the challenge, the user's name, a NUL byte and the password.
/// Thread-safety: one thread at a time.
class LdifBackend : public brondalt::Backend {
 public:
  /// An empty directory, to be filled before it is served. `statistics` must outlive this object.
  explicit LdifBackend(const brondalt::Statistics& statistics);
  ~LdifBackend() override;

  Directory& directory() { return m_directory; }
  Accounts& accounts() { return m_accounts; }

  brondalt::Health health() const override;

  // backend_lookups.cpp
  void find(const brondalt::Caller& caller, const brondalt::Selection& selection,
            const brondalt::LookupKey& key, brondalt::Done<brondalt::Object> done) override;
  void openListing(const brondalt::Caller& caller, vesk::DSObjectType type,
                   brondalt::Done<std::unique_ptr<brondalt::Listing>> done) override;
  void search(const brondalt::Caller& caller, const brondalt::SearchQuery& query, size_t limit,
              brondalt::Done<brondalt::Objects> done) override;
  void openSearch(const brondalt::Caller& caller, const brondalt::SearchQuery& query,
                  brondalt::Done<std::unique_ptr<brondalt::Search>> done) override;
  void fetch(const brondalt::Caller& caller, const std::string& domain, const std::string& dn,
             const std::vector<std::string>& attributes, brondalt::Done<brondalt::Object> done) override;

  // backend_logins.cpp
  void validatePassword(const std::string& user, const vesk::Shredder& password,
                        brondalt::DoneStatus done) override;
  void validateKerberos(const std::string& principal, const vesk::Shredder& token,
                        brondalt::Done<brondalt::Object> done) override;
  void ntlmChallenge(const std::string& data, brondalt::Done<std::string> done) override;
  void validateNtlm(const std::string& challenge, const vesk::Shredder& token,
                    brondalt::Done<brondalt::Object> done) override;
  void samLogon(const std::string& user, const std::string& domain, const vesk::Shredder& token,
                brondalt::Done<std::string> done) override;
  void checkMembership(const std::string& user, const std::vector<std::string>& groups,
                       brondalt::NameForm form, brondalt::DoneStatus done) override;
  void beginLogin(const std::string& user, brondalt::DoneStatus done) override;
  void endLogin(const std::string& user, brondalt::DoneStatus done) override;
  void renewCredentials(const std::string& user, brondalt::Done<int> done) override;

  // backend_passwords.cpp
  void changePassword(const std::string& user, const vesk::Shredder& old, const vesk::Shredder& wanted,
                      brondalt::DoneStatus done) override;
  void samChangePassword(const std::string& user, const vesk::Shredder& old, const vesk::Shredder& wanted,
                         brondalt::DoneStatus done) override;
  void setPassword(const brondalt::Caller& caller, const std::string& user, const vesk::Shredder& wanted,
                   const brondalt::Administrator& administrator, brondalt::DoneStatus done) override;
  void setMachinePassword(const brondalt::Caller& caller, const std::string& computer,
                          const vesk::Shredder& wanted, const brondalt::Administrator& administrator,
                          brondalt::DoneStatus done) override;
  void addUser(const brondalt::Caller& caller, const brondalt::NewUser& user,
               const brondalt::Administrator& administrator, brondalt::DoneStatus done) override;

  // backend_administration.cpp
  void flushCache(const brondalt::Caller& caller, vesk::ADObject object, unsigned selectors,
                  const std::string& key, brondalt::DoneStatus done) override;
  void dumpCache(const brondalt::Caller& caller, const std::vector<std::string>& arguments,
                 brondalt::DoneStatus done) override;
  void updateUserPolicy(const brondalt::Caller& caller, const std::string& user,
                        brondalt::DoneStatus done) override;
  void updateMachinePolicy(const brondalt::Caller& caller, brondalt::DoneStatus done) override;
  void networkChanged(const brondalt::Caller& caller, brondalt::DoneStatus done) override;
  void readState(const brondalt::Caller& caller, int what, brondalt::Done<std::string> done) override;
  void servicePrincipal(const std::string& service, brondalt::Done<std::string> done) override;
  void findDomain(const std::string& name, brondalt::Done<brondalt::DomainNames> done) override;
  void hasRoles(brondalt::Done<int> done) override;
  void isSandboxed(const std::string& user, brondalt::Done<int> done) override;
  void allRoles(brondalt::Done<brondalt::Objects> done) override;
  void rolesOf(const std::string& user, brondalt::Done<brondalt::Objects> done) override;
  void rolesOfLocal(const std::string& user, const std::string& uid, const std::string& gid,
                    brondalt::Done<brondalt::Objects> done) override;

 private:
  struct StateRow;
  class LdifListing;
  class LdifSearch;
  static const StateRow kState[];

  EntryId account(const std::string& name) const { return m_directory.byName(name, Family::Accounts); }
  brondalt::Objects objects(const std::vector<EntryId>& ids);
  LdifSearch makeSearch(const brondalt::SearchQuery& query);
  vesk::ValidationResult validate(EntryId account, const std::string& password);
  vesk::ValidationResult checkPermission(const brondalt::Caller& caller,
                                         const brondalt::Administrator& administrator);
  vesk::ValidationResult checkAdministrator(const brondalt::Administrator& administrator);
  vesk::ValidationResult checkNewUser(const brondalt::NewUser& user) const;
  vesk::ValidationResult change(const std::string& user, const std::string& old, const std::string& wanted);
  vesk::ValidationResult reset(EntryId account, const std::string& wanted);
  void answerWithUser(EntryId account, vesk::ValidationResult result,
                      const brondalt::Done<brondalt::Object>& done);

  const brondalt::Statistics& m_statistics;
  Directory m_directory;
  Accounts m_accounts{m_directory};
  AttributeMap m_objects{m_directory};
  bool m_networkHasChanged = false;
};

}  // namespace standin
