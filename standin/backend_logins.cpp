#include "standin/ldif_backend.h"

#include <algorithm>

#include "standin/nt_status.h"
#include "standin/random_bytes.h"

namespace standin {

using namespace brondalt;
using vesk::ValidationResult;

namespace {

constexpr size_t kChallengeSize = 8;
constexpr size_t kSessionKeySize = 16;

EntryId findGroup(const Directory& directory, const std::string& name, NameForm form) {
  switch (form) {
    case NameForm::Unix:
      return directory.byUnixName(name, Family::Groups);
    case NameForm::Directory:
      return directory.byWindowsName(name, Family::Groups);
    default:
      return directory.byName(name, Family::Groups);
  }
}

}  // namespace

ValidationResult LdifBackend::validate(EntryId account, const std::string& password) {
  return account == kNoEntry ? vesk::VR_INVALID_PRINCIPAL : m_accounts.validate(account, password);
}

void LdifBackend::answerWithUser(EntryId account, ValidationResult result, const Done<Object>& done) {
  if (result != vesk::VR_SUCCESS) return done(result);
  done(m_objects.blob(account));
}

void LdifBackend::validatePassword(const std::string& user, const vesk::Shredder& password, DoneStatus done) {
  done(validate(account(user), password));
}

void LdifBackend::validateKerberos(const std::string& principal, const vesk::Shredder& token,
                                   Done<Object> done) {
  const EntryId id = account(principal);
  answerWithUser(id, validate(id, token), done);
}

void LdifBackend::ntlmChallenge(const std::string&, Done<std::string> done) {
  done(randomBytes(kChallengeSize));
}

void LdifBackend::validateNtlm(const std::string& challenge, const vesk::Shredder& token, Done<Object> done) {
  const size_t end = token.size() < kChallengeSize ? std::string::npos : token.find('\0', kChallengeSize);
  if (challenge.empty() || token.compare(0, kChallengeSize, challenge) != 0 || end == std::string::npos)
    return done(vesk::VR_LOGON_FAILURE);
  const EntryId id = account(token.substr(kChallengeSize, end - kChallengeSize));
  answerWithUser(id, validate(id, vesk::Shredder(token.substr(end + 1))), done);
}

void LdifBackend::samLogon(const std::string& user, const std::string& domain, const vesk::Shredder& token,
                           Done<std::string> done) {
  const bool isOurs = domain.empty() || m_directory.isDomainName(domain);
  const ValidationResult result = validate(isOurs ? account(user) : kNoEntry, token);
  if (result != vesk::VR_SUCCESS) return done(Status(vesk::VR_LOGON_FAILURE, "", ntStatus(result)));
  done(randomBytes(kSessionKeySize));
}

void LdifBackend::checkMembership(const std::string& user, const std::vector<std::string>& groups,
                                  NameForm form, DoneStatus done) {
  const EntryId id = account(user);
  if (id == kNoEntry) return done(vesk::VR_INVALID_PRINCIPAL);
  const std::vector<EntryId> own = m_directory.membership().groupsAbove(id);
  const bool isMember = std::any_of(groups.begin(), groups.end(), [&](const std::string& name) {
    return std::find(own.begin(), own.end(), findGroup(m_directory, name, form)) != own.end();
  });
  done(isMember ? vesk::VR_SUCCESS : vesk::VR_NOT_GROUP_MEMBER);
}

void LdifBackend::beginLogin(const std::string& user, DoneStatus done) {
  const EntryId id = account(user);
  if (id == kNoEntry) return done(vesk::VR_INVALID_PRINCIPAL);
  m_accounts.login(id);
  done(vesk::VR_SUCCESS);
}

void LdifBackend::endLogin(const std::string& user, DoneStatus done) {
  const EntryId id = account(user);
  const bool wasIn = id != kNoEntry && m_accounts.logout(id);
  done(wasIn ? vesk::VR_SUCCESS : vesk::VR_NOT_FOUND);
}

void LdifBackend::renewCredentials(const std::string& user, Done<int> done) {
  const EntryId id = account(user);
  if (id == kNoEntry) return done(vesk::VR_INVALID_PRINCIPAL);
  done(static_cast<int>(m_accounts.logins(id)));
}

}  // namespace standin
