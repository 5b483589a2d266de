#include "daemon/handlers.h"

#include <utility>

#include "daemon/call.h"

namespace brondalt {
namespace {

// Kinds of names in a group test; wire values. Any other number means either kind.
constexpr int kUnixNames = 0;
constexpr int kDirectoryNames = 1;

NameForm nameForm(int number) {
  if (number == kUnixNames) return NameForm::Unix;
  return number == kDirectoryNames ? NameForm::Directory : NameForm::Either;
}

}  // namespace

void handlers::authRequest(Call& call, Request) {
  call.backend().authenticateProcess(call.caller(), call.reply());
}

void handlers::validatePlainText(Call& call, Request request) {
  const std::string user = request.getString();
  const vesk::Shredder password = readSecret(request);
  request.getInt();
  call.backend().validatePassword(user, password, call.reply());
}

void handlers::validateKerberos(Call& call, Request request) {
  const std::string principal = request.getString();
  const vesk::Shredder token = readSecret(request);
  call.backend().validateKerberos(principal, token, call.reply<Object>());
}

void handlers::ntlmChallenge(Call& call, Request request) {
  const std::string data = request.getString();
  call.backend().ntlmChallenge(data, [self = call.shared_from_this()](Answer<std::string> answer) {
    if (answer) self->client().challenge = *answer;
    self->reply<std::string>()(std::move(answer));
  });
}

void handlers::validateNtlm(Call& call, Request request) {
  const vesk::Shredder token = readSecret(request);
  const std::string challenge = std::exchange(call.client().challenge, std::string());
  call.backend().validateNtlm(challenge, token, call.reply<Object>());
}

void handlers::validateUserGroup(Call& call, Request request) {
  const std::string user = request.getString();
  const std::vector<std::string> groups = request.getStringVector();
  request.getInt();
  const int form = request.getInt();
  call.backend().checkMembership(user, groups, nameForm(form), call.reply());
}

void handlers::userLogin(Call& call, Request request) {
  call.backend().beginLogin(request.getString(), call.reply());
}

void handlers::userLogout(Call& call, Request request) {
  call.backend().endLogin(request.getString(), call.reply());
}

void handlers::renewCredentials(Call& call, Request request) {
  call.backend().renewCredentials(request.getString(), call.reply<int>());
}

void handlers::samLogon(Call& call, Request request) {
  const std::string user = request.getString();
  const std::string domain = request.getString();
  const vesk::Shredder token = readSecret(request);
  request.getInt();
  call.backend().samLogon(user, domain, token, call.reply<std::string>());
}

}  // namespace brondalt
