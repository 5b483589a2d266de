#include "daemon/handlers.h"

#include <fokrazo/adobject.h>
#include "daemon/call.h"

namespace brondalt {
namespace {

constexpr int kUserPolicy = 1;
constexpr char kAllUsers[] = "all users";

/// Replies with one of a domain's two names.
Done<DomainNames> replyWithName(Call& call, const std::string& asked, std::string DomainNames::*name) {
  return [self = call.shared_from_this(), asked, name](Answer<DomainNames> answer) {
    if (answer) return self->reply<std::string>()((*answer).*name);
    Status status = answer.status();
    if (status.result == vesk::VR_NOT_FOUND && status.message.empty())
      status.message = "Unknown domain: " + asked;
    self->complete(status);
  };
}

}  // namespace

void handlers::flushCache(Call& call, Request request) {
  const vesk::ADObject object = request.getADObject();
  const auto selectors = static_cast<unsigned>(request.getInt());
  const std::string key = request.getString();
  call.backend().flushCache(call.caller(), object, selectors, key, call.reply());
}

void handlers::updatePolicy(Call& call, Request request) {
  if (request.getInt() == kUserPolicy) {
    call.backend().updateUserPolicy(call.caller(), request.getString(), call.reply());
  } else {
    call.backend().updateMachinePolicy(call.caller(), call.reply());
  }
}

void handlers::networkChanged(Call& call, Request) {
  call.backend().networkChanged(call.caller(), call.reply());
}

void handlers::readState(Call& call, Request request) {
  call.backend().readState(call.caller(), request.getInt(), call.reply<std::string>());
}

void handlers::dumpCache(Call& call, Request request) {
  std::vector<std::string> arguments(3);
  for (std::string& argument : arguments) argument = request.getString();
  call.backend().dumpCache(call.caller(), arguments, call.reply());
}

void handlers::setSessionId(Call& call, Request request) {
  call.client().caller.sessionId = request.getString();
  call.complete(vesk::VR_SUCCESS);
}

void handlers::getServicePrincipal(Call& call, Request request) {
  call.backend().servicePrincipal(request.getString(), call.reply<std::string>());
}

void handlers::mapDomain(Call& call, Request request) {
  const std::string name = request.getString();
  request.getInt();
  call.backend().findDomain(name, call.reply<DomainNames>());
}

void handlers::getAdDomain(Call& call, Request request) {
  const std::string name = request.getString();
  call.backend().findDomain(name, replyWithName(call, name, &DomainNames::dns));
}

void handlers::getNtlmDomain(Call& call, Request request) {
  const std::string name = request.getString();
  call.backend().findDomain(name, replyWithName(call, name, &DomainNames::netbios));
}

void handlers::rolesEnabled(Call& call, Request) {
  call.backend().hasRoles(call.reply<int>());
}

void handlers::rolesSandboxed(Call& call, Request request) {
  const std::string user = request.getString();
  request.getInt();
  call.backend().isSandboxed(user, call.reply<int>());
}

void handlers::getRoles(Call& call, Request request) {
  const std::string user = request.getString();
  request.getInt();
  if (user == kAllUsers) return call.backend().allRoles(call.reply<Objects>());
  call.backend().rolesOf(user, call.reply<Objects>());
}

void handlers::getRolesLocal(Call& call, Request request) {
  const std::string user = request.getString();
  if (user == kAllUsers) return call.backend().allRoles(call.reply<Objects>());
  const std::string uid = request.getString();
  const std::string gid = request.getString();
  call.backend().rolesOfLocal(user, uid, gid, call.reply<Objects>());
}

}  // namespace brondalt
