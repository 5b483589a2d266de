// id: a user's ids and groups.

#include "cli/inspection.h"
#include "cli/memberships.h"
#include "cli/object_key.h"
#include "cli/views.h"

namespace cli {

namespace {

using namespace vesk;

// As id(1) prints it: "10060(lquispe)", "-(jo)" without a Unix id.
std::string idText(bool isUnix, unsigned id, const std::string& name) {
  return (isUnix ? std::to_string(id) : "-") + (name.empty() ? "" : '(' + shown(name) + ')');
}

class IdCommand {
 public:
  IdCommand(Daemon& daemon, const User& user, std::vector<Membership> memberships)
      : m_daemon(daemon), m_user(user), m_memberships(std::move(memberships)) {}

  ExitStatus print(Output& output) const {
    if (output.json())
      output.record(record());
    else
      printTable(output);
    ExitStatus status = kFound;
    for (const Membership& membership : m_memberships)
      status = worse(status, exitStatusOf(membership.call.result.status()));
    return status;
  }

 private:
  void printTable(Output& output) const {
    output.record(Record(), firstLine());
    output.startTable({"GID", "GROUP", "HOW"});
    for (const Membership& membership : m_memberships) output.show(viewOf(membership));
    output.endTable();
  }

  std::string firstLine() const {
    const bool hasGroup = !m_memberships.empty() && m_memberships.front().how == Membership::Primary;
    const std::string group = hasGroup ? nameOf(*m_memberships.front().group()) : "";
    return "uid=" + idText(m_user.isUnix(), m_user.getId(), nameOf(m_user)) +
           " gid=" + idText(m_user.isUnix(), m_user.gid(), group);
  }

  View viewOf(const Membership& membership) const {
    std::vector<std::string> cells = {"-", membership.key, textOf(membership.how)};
    if (const Group* group = membership.group()) {
      if (group->isUnix()) cells[0] = std::to_string(group->getId());
      cells[1] = shown(nameOf(*group));
    } else {
      cells[2] += ": " + meaningOf(membership.call.result.status(), m_daemon.socketPath());
    }
    return {Record(), cells[0] + '\t' + cells[1] + '\t' + cells[2], cells};
  }

  Record record() const {
    std::list<std::string> groups;
    for (const Membership& membership : m_memberships) groups.push_back(recordOf(membership).json());
    return cli::viewOf(m_user).record.list("groups", groups);
  }

  Record recordOf(const Membership& membership) const {
    Record record;
    record.text("how", textOf(membership.how)).text("key", membership.key);
    const Group* group = membership.group();
    if (!group) {
      const CallFailure failure(membership.call.result.status(), membership.key, m_daemon.socketPath());
      return record.object("error", cli::recordOf(failure));
    }
    record.text("name", nameOf(*group)).text("accountName", group->name()).text("dn", group->getDN());
    record.text("sid", group->getSid().toMSString()).boolean("unix", group->isUnix());
    if (group->isUnix()) record.number("gid", group->getId());
    return record;
  }

  Daemon& m_daemon;
  const User& m_user;
  const std::vector<Membership> m_memberships;
};

}  // namespace

ExitStatus id(Invocation& invocation) {
  Arguments& arguments = invocation.arguments;
  std::string by;
  arguments.option("--by", by);
  const int flags = arguments.flag("--refresh") ? CHECK_AD_FIRST : 0;
  const std::string text = arguments.operand("a user");
  arguments.done();

  Daemon& daemon = invocation.daemon;
  const auto found = daemon.client().user(readObjectKey(text, by), flags | GROUP_MEMBERSHIP);
  const User& user = daemon.require(found, text);
  return IdCommand(daemon, user, membershipsOf(daemon, user, askForGroups(daemon, user, flags)))
      .print(invocation.output);
}

}  // namespace cli
