#include "daemon/handlers.h"

#include "daemon/call.h"

namespace brondalt {
namespace {

Administrator readAdministrator(handlers::Request request) {
  Administrator administrator;
  administrator.name = request.getString();
  administrator.password = readSecret(request);
  return administrator;
}

}  // namespace

void handlers::changePassword(Call& call, Request request) {
  const std::string user = request.getString();
  const vesk::Shredder old = readSecret(request);
  const vesk::Shredder wanted = readSecret(request);
  request.getInt();
  call.backend().changePassword(user, old, wanted, call.reply());
}

void handlers::setPassword(Call& call, Request request) {
  const std::string user = request.getString();
  const vesk::Shredder wanted = readSecret(request);
  const Administrator administrator = readAdministrator(request);
  call.backend().setPassword(call.caller(), user, wanted, administrator, call.reply());
}

void handlers::setPasswordKrb5(Call& call, Request request) {
  const std::string user = request.getString();
  const vesk::Shredder wanted = readSecret(request);
  call.backend().setPassword(call.caller(), user, wanted, {}, call.reply());
}

void handlers::addUser(Call& call, Request request) {
  NewUser user;
  user.name = request.getString();
  user.password = readSecret(request);
  for (std::string* field : {&user.uid, &user.gid, &user.fullName, &user.home, &user.shell, &user.container})
    *field = request.getString();
  const Administrator administrator = request.hasMore() ? readAdministrator(request) : Administrator();
  call.backend().addUser(call.caller(), user, administrator, call.reply());
}

void handlers::setMachinePassword(Call& call, Request request) {
  const std::string computer = request.getString();
  const vesk::Shredder wanted = readSecret(request);
  const Administrator administrator = readAdministrator(request);
  call.backend().setMachinePassword(call.caller(), computer, wanted, administrator, call.reply());
}

void handlers::samChangePassword(Call& call, Request request) {
  const std::string user = request.getString();
  const vesk::Shredder wanted = readSecret(request);
  const vesk::Shredder old = readSecret(request);
  readSecret(request);
  readSecret(request);
  call.backend().samChangePassword(user, old, wanted, call.reply());
}

}  // namespace brondalt
