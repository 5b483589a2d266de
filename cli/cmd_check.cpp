// check: why a user can or cannot log in.

#include <ctime>

#include "cli/account_check.h"
#include "cli/inspection.h"
#include "cli/object_key.h"

namespace cli {

namespace {

constexpr const char* kStates[] = {"ok", "warning", "problem", "failed"};

// Milliseconds, "-" if nothing was asked.
std::string timeText(const CheckStep& step) {
  return step.elapsed ? textOf(*step.elapsed) : "-";
}

Record recordOf(const CheckStep& step) {
  Record record;
  record.text("step", step.name).text("state", kStates[step.state]).text("text", step.text);
  if (step.elapsed) record.milliseconds("milliseconds", *step.elapsed);
  if (step.failure) record.object("error", recordOf(*step.failure));
  return record;
}

void printRecord(Output& output, const std::string& user, const AccountCheck& check) {
  std::list<std::string> steps;
  for (const CheckStep& step : check.steps()) steps.push_back(recordOf(step).json());
  Record record;
  record.text("user", user).number("status", check.status()).list("steps", steps);
  if (const CallFailure* failure = check.failure()) record.object("error", recordOf(*failure));
  output.record(record);
}

void printTable(Output& output, const AccountCheck& check) {
  output.startTable({"STEP", "STATE", "MS", "RESULT"});
  for (const CheckStep& step : check.steps()) {
    const std::vector<std::string> cells = {step.name, kStates[step.state], timeText(step), step.text};
    output.show({Record(), cells[0] + '\t' + cells[1] + '\t' + cells[2] + '\t' + cells[3], cells});
  }
  output.endTable();
  if (const CallFailure* failure = check.failure()) output.fail(*failure);
}

constexpr Option kIdOptions[] = {
    {"--by", "KIND", "what the key is: name, id, sid or guid"},
    {"--refresh", nullptr, "ask the directory, not the daemon's cache"},
};
constexpr Option kCheckOptions[] = {
    {"--by", "KIND", "what the key is: name, id, sid or guid"},
    {"--all", nullptr, "list each group, even if there are more than 20"},
};
constexpr char kIdNotes[] =
    "A group is the user's primary one, or names the user itself (direct), or contains\n"
    "another one of them (nested). Without a Unix profile the id is \"-\".\n"
    "If a group cannot be resolved, the exit status says why.\n";
constexpr char kCheckNotes[] =
    "Steps: the daemon, the lookup, each group, the answer of this host's name service,\n"
    "the account (disabled, locked, expired, logon hours), its password, and what a login\n"
    "module would answer to a login with a correct password. Times are in milliseconds.\n"
    "Exit status: 0 all well, 1 no login, or the name service disagrees, 3 or 4 the daemon\n"
    "did not answer one of the questions.\n";

const Command kCommands[] = {
    {"id", "NAME|UID|SID|GUID", "show a user's ids and groups", id, kIdOptions, kIdNotes},
    {"check", "NAME|UID|SID|GUID", "find out whether and why a user can or cannot log in", check,
     kCheckOptions, kCheckNotes},
};

}  // namespace

ExitStatus check(Invocation& invocation) {
  Arguments& arguments = invocation.arguments;
  std::string by;
  arguments.option("--by", by);
  const bool listsGroups = arguments.flag("--all");
  const std::string user = arguments.operand("a user");
  arguments.done();

  AccountCheck check(invocation.daemon, listsGroups);
  check.run(readObjectKey(user, by), user, time(nullptr));
  if (invocation.output.json())
    printRecord(invocation.output, user, check);
  else
    printTable(invocation.output, check);
  return check.status();
}

Family inspectionCommands() {
  return {"Look into an account", kCommands, std::size(kCommands)};
}

}  // namespace cli
