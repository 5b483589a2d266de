// A user's account: auth, passwd, member, renew.

#include <fokrazo/session.h>
#include "cli/command.h"
#include "cli/result.h"
#include "cli/secret.h"

namespace cli {

namespace {

using namespace vesk;

ExitStatus auth(Invocation& invocation) {
  SecretSource secrets(invocation.arguments);
  const std::string user = invocation.arguments.operand("a user");
  invocation.arguments.done();
  Client& client = invocation.daemon.clientForSecrets();
  const Shredder password = secrets.read("Password: ");
  const CallStatus call = client.authenticate(user, password);
  invocation.daemon.require(call, user);
  return report(invocation.output, call);
}

ExitStatus passwd(Invocation& invocation) {
  SecretSource secrets(invocation.arguments);
  std::string admin;
  const bool isReset = invocation.arguments.option("--admin", admin);
  const std::string user = invocation.arguments.operand("a user");
  invocation.arguments.done();
  Client& client = invocation.daemon.clientForSecrets();
  const Shredder current = secrets.read(isReset ? "Administrator's password: " : "Current password: ");
  const Shredder wanted = secrets.readNew("New password: ", "New password again: ");
  const CallStatus call = isReset ? client.setPassword(user, wanted, admin, current)
                                  : client.changePassword(user, current, wanted);
  invocation.daemon.require(call, user);
  return report(invocation.output, call);
}

ExitStatus member(Invocation& invocation) {
  const bool isUnix = invocation.arguments.flag("--unix");
  const bool isWindows = invocation.arguments.flag("--windows");
  const std::string user = invocation.arguments.operand("a user");
  const std::vector<std::string> groups = invocation.arguments.operands();
  if (groups.empty()) throw UsageError("a group is missing");
  const int named = (isUnix ? UNIX_NAME : 0) | (isWindows ? WINDOWS_NAME : 0);
  const int forms = named == 0 ? UNIX_NAME | WINDOWS_NAME : named;
  const auto ask = [&](LocalRpcSession& session) { session.validateUserGroup(user, groups, false, forms); };
  return report(invocation.output, invocation.daemon.ask("member", Client::Repeat::Harmless, user, ask));
}

ExitStatus renew(Invocation& invocation) {
  const std::string user = invocation.arguments.operand("a user");
  invocation.arguments.done();
  int count = 0;
  invocation.daemon.ask("renew", Client::Repeat::Harmless, user,
                        [&](LocalRpcSession& session) { session.renewCredentials(user, count); });
  invocation.output.record(Record().number("renewed", count), "renewed: " + std::to_string(count));
  return kFound;
}

constexpr Option kAuthOptions[] = {{"--password-fd", "N", "read the password from descriptor N"}};
constexpr Option kPasswdOptions[] = {
    {"--password-fd", "N",
     "read the passwords from descriptor N, one per line: the current\n(or the administrator's) one, then "
     "the new one"},
    {"--admin", "ADMIN", "set the password as this administrator"},
};
constexpr Option kMemberOptions[] = {
    {"--unix", nullptr, "the group names are Unix names"},
    {"--windows", nullptr, "the group names are account names of the directory"},
};

constexpr char kAuthNotes[] =
    "Asks for the password at the terminal, without echo. It is sent only to a daemon\n"
    "that runs as root; see --peer-uid.\n";
constexpr char kPasswdNotes[] =
    "Asks for the passwords at the terminal, without echo, and for the new one twice.\n"
    "They are sent only to a daemon that runs as root; see --peer-uid.\n";

const Command kCommands[] = {
    {"auth", "USER", "check a user's password", auth, kAuthOptions, kAuthNotes},
    {"passwd", "USER", "change a user's password, or set it as an administrator", passwd, kPasswdOptions,
     kPasswdNotes},
    {"member", "USER GROUP …", "check whether a user is in any of the groups", member, kMemberOptions,
     "Without either option, both kinds of names are accepted.\n"},
    {"renew", "USER", "renew a user's credentials", renew, {}},
};

}  // namespace

Family accountCommands() {
  return {"Work with accounts", kCommands, std::size(kCommands)};
}

}  // namespace cli
