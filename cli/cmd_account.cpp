// A user's account: auth, passwd, member, renew.

#include <fokrazo/error_util.h>
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
  LocalRpcSession& session = invocation.daemon.sessionForSecrets();
  const Shredder password = secrets.read("Password: ");
  return report(invocation.output, session, session.validatePlainTextUser(user, password, false));
}

ExitStatus passwd(Invocation& invocation) {
  SecretSource secrets(invocation.arguments);
  std::string admin;
  const bool reset = invocation.arguments.option("--admin", admin);
  const std::string user = invocation.arguments.operand("a user");
  invocation.arguments.done();
  LocalRpcSession& session = invocation.daemon.sessionForSecrets();
  const Shredder current = secrets.read(reset ? "Administrator's password: " : "Current password: ");
  const Shredder wanted = secrets.read("New password: ");
  const ValidationResult result = reset ? session.setPassword(user, wanted, admin, current)
                                        : session.changePassword(user, current, wanted, false);
  return report(invocation.output, session, result);
}

ExitStatus member(Invocation& invocation) {
  const bool unixNames = invocation.arguments.flag("--unix");
  const bool windowsNames = invocation.arguments.flag("--windows");
  const std::string user = invocation.arguments.operand("a user");
  const std::vector<std::string> groups = invocation.arguments.operands();
  if (groups.empty()) throw UsageError("a group is missing");
  const int nameFlags = (unixNames ? UNIX_NAME : 0) | (windowsNames ? WINDOWS_NAME : 0);
  LocalRpcSession& session = invocation.daemon.session();
  const int forms = nameFlags == 0 ? UNIX_NAME | WINDOWS_NAME : nameFlags;
  return report(invocation.output, session, session.validateUserGroup(user, groups, false, forms));
}

ExitStatus renew(Invocation& invocation) {
  const std::string user = invocation.arguments.operand("a user");
  invocation.arguments.done();
  LocalRpcSession& session = invocation.daemon.session();
  int count = 0;
  const ValidationResult result = session.renewCredentials(user, count);
  if (result != VR_SUCCESS) return report(invocation.output, session, result);
  invocation.output.record(Record().number("renewed", count), "renewed: " + std::to_string(count));
  return kFound;
}

constexpr char kAuthHelp[] =
    "Asks for the password at the terminal, without echo.\n"
    "  --password-fd N  read it from descriptor N instead\n"
    "The password is sent only to a daemon that runs as root; see --peer-uid.\n";

constexpr char kPasswdHelp[] =
    "Asks for the passwords at the terminal, without echo.\n"
    "  --password-fd N  read them from descriptor N instead, one per line: the current\n"
    "                   (or the administrator's) password, then the new one\n"
    "  --admin ADMIN    set the password as this administrator\n"
    "Passwords are sent only to a daemon that runs as root; see --peer-uid.\n";

const Command kCommands[] = {
    {"auth", "[--password-fd N] USER", "check a user's password", kAuthHelp, auth},
    {"passwd", "[--password-fd N] [--admin ADMIN] USER",
     "change a user's password, or set it as an administrator", kPasswdHelp, passwd},
    {"member", "[--unix] [--windows] USER GROUP …", "check whether a user is in any of the groups",
     "  --unix         the group names are Unix names\n"
     "  --windows      the group names are account names of the directory\n"
     "Without either option, both kinds of names are accepted.\n",
     member},
    {"renew", "USER", "renew a user's credentials", "", renew},
};

}  // namespace

Family accountCommands() {
  return {"Work with accounts", kCommands, sizeof kCommands / sizeof *kCommands};
}

}  // namespace cli
