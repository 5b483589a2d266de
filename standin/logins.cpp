// There is no cryptography here: the password itself stands for whatever a client would derive from it. A
// Kerberos token is the principal's password. An NTLM token is the challenge, the user's name, a NUL byte and
// the password.

#include "standin/handlers.h"

#include <fokrazo/adserializer.h>
#include "standin/call.h"
#include "standin/nt_status.h"
#include "standin/random_bytes.h"

namespace standin {
namespace {

using vesk::ValidationResult;

constexpr size_t kChallengeSize = 8;
constexpr size_t kSessionKeySize = 16;

// Forms of the names in a group test; wire values.
constexpr int kUnixNames = 0;
constexpr int kDirectoryNames = 1;

ValidationResult validate(Call& call, EntryId account, const std::string& password) {
  return account == kNoEntry ? vesk::VR_INVALID_PRINCIPAL : call.service.accounts.validate(account, password);
}

void answerWithUser(Call& call, EntryId account, ValidationResult result) {
  if (result != vesk::VR_SUCCESS) return call.answer(result);
  call.succeed() += call.service.objects.blob(account);
}

EntryId findGroup(const Directory& directory, const std::string& name, int form) {
  if (form == kUnixNames) return directory.byUnixName(name, Family::Groups);
  if (form == kDirectoryNames) return directory.byWindowsName(name, Family::Groups);
  return directory.byName(name, Family::Groups);
}

bool isMember(const Directory& directory, EntryId account, const std::vector<std::string>& groups, int form) {
  std::vector<EntryId> own = directory.membership().groupsAbove(account);
  for (const std::string& name : groups) {
    EntryId group = findGroup(directory, name, form);
    for (EntryId id : own)
      if (id == group) return true;
  }
  return false;
}

}  // namespace

void handlers::authRequest(Call& call) {
  call.succeed();
}

void handlers::validatePlainText(Call& call) {
  EntryId account = call.account(call.request.getString());
  std::string password = call.request.getString();
  call.request.getInt();
  call.answer(validate(call, account, password));
}

void handlers::validateKerberos(Call& call) {
  EntryId account = call.account(call.request.getString());
  std::string token = call.request.getString();
  answerWithUser(call, account, validate(call, account, token));
}

void handlers::ntlmChallenge(Call& call) {
  call.request.getString();
  call.client.challenge = randomBytes(kChallengeSize);
  call.succeed() += call.client.challenge;
}

void handlers::validateNtlm(Call& call) {
  std::string token = call.request.getString();
  std::string challenge;
  challenge.swap(call.client.challenge);
  size_t end = token.size() < kChallengeSize ? std::string::npos : token.find('\0', kChallengeSize);
  if (challenge.empty() || token.compare(0, kChallengeSize, challenge) != 0 || end == std::string::npos)
    return call.answer(vesk::VR_LOGON_FAILURE);
  EntryId account = call.account(token.substr(kChallengeSize, end - kChallengeSize));
  answerWithUser(call, account, validate(call, account, token.substr(end + 1)));
}

void handlers::validateUserGroup(Call& call) {
  EntryId account = call.account(call.request.getString());
  std::vector<std::string> groups = call.request.getStringVector();
  call.request.getInt();
  int form = call.request.getInt();
  if (account == kNoEntry) return call.answer(vesk::VR_INVALID_PRINCIPAL);
  bool isOne = isMember(call.service.directory, account, groups, form);
  call.answer(isOne ? vesk::VR_SUCCESS : vesk::VR_NOT_GROUP_MEMBER);
}

void handlers::userLogin(Call& call) {
  EntryId account = call.account(call.request.getString());
  if (account == kNoEntry) return call.answer(vesk::VR_INVALID_PRINCIPAL);
  call.service.accounts.login(account);
  call.succeed();
}

void handlers::userLogout(Call& call) {
  EntryId account = call.account(call.request.getString());
  bool wasIn = account != kNoEntry && call.service.accounts.logout(account);
  call.answer(wasIn ? vesk::VR_SUCCESS : vesk::VR_NOT_FOUND);
}

void handlers::renewCredentials(Call& call) {
  EntryId account = call.account(call.request.getString());
  if (account == kNoEntry) return call.answer(vesk::VR_INVALID_PRINCIPAL);
  call.succeed() += static_cast<int>(call.service.accounts.logins(account));
}

void handlers::samLogon(Call& call) {
  EntryId account = call.account(call.request.getString());
  std::string domain = call.request.getString();
  std::string token = call.request.getString();
  call.request.getInt();
  if (!domain.empty() && !call.service.directory.isDomainName(domain)) account = kNoEntry;
  ValidationResult result = validate(call, account, token);
  if (result != vesk::VR_SUCCESS) return call.answer(vesk::VR_LOGON_FAILURE, ntStatus(result));
  call.succeed() += randomBytes(kSessionKeySize);
}

}  // namespace standin
