#include "cli/account_check.h"

#include <iterator>

#include <fokrazo/session.h>
#include "cli/doctor/checks.h"
#include "cli/host_account.h"
#include "cli/memberships.h"
#include "cli/shown.h"
#include "cli/stopwatch.h"

namespace cli {

namespace {

using namespace vesk;
using Fact = AccountState::Fact;
using std::chrono::microseconds;

constexpr size_t kManyGroups = 20;  // more are summed up
constexpr time_t kDay = 24 * 60 * 60;

// "2026-11-21 07:48 UTC"; the seconds since the epoch if no calendar goes that far.
std::string timeText(time_t time) {
  tm parts;
  char text[32];
  if (!gmtime_r(&time, &parts) || strftime(text, sizeof text, "%Y-%m-%d %H:%M UTC", &parts) == 0)
    return std::to_string(time);
  return text;
}

std::string countText(long long count, const std::string& what) {
  return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

std::string groupText(const Membership& membership) {
  const Group& group = *membership.group();
  const std::string gid = group.isUnix() ? "gid " + std::to_string(group.getId()) : "no gid";
  return shown(nameOf(group)) + ", " + gid + ", " + textOf(membership.how);
}

// A group that the daemon does not know keeps nobody from logging in.
CheckStep::State stateOf(const CallStatus& call) {
  return call.outcome == CallOutcome::NotFound ? CheckStep::Warning : CheckStep::Failed;
}

// Such as "uid 1 instead of 10060"; nothing if they are the same.
std::string difference(const char* what, const std::string& own, const std::string& wanted) {
  return own == wanted ? "" : std::string(", ") + what + ' ' + shown(own) + " instead of " + shown(wanted);
}

// In the order of LoginAnswer.
constexpr const char* kPamNames[] = {
    "PAM_SUCCESS",      "PAM_USER_UNKNOWN",         "PAM_AUTH_ERR",
    "PAM_MAXTRIES",     "PAM_CRED_INSUFFICIENT",    "PAM_AUTHINFO_UNAVAIL",
    "PAM_ACCT_EXPIRED", "PAM_NEW_AUTHTOK_REQD",     "PAM_PERM_DENIED",
    "PAM_AUTHTOK_ERR",  "PAM_AUTHTOK_RECOVERY_ERR", "PAM_TRY_AGAIN",
};
static_assert(std::size(kPamNames) == static_cast<size_t>(LoginAnswer::TryAgain) + 1);

}  // namespace

void AccountCheck::add(const char* name, CheckStep::State state, const std::string& text, Elapsed elapsed) {
  m_steps.push_back({name, state, text, elapsed, {}});
  if (state == CheckStep::Problem) m_status = worse(m_status, kRefused);
}

void AccountCheck::addFailure(const char* name, CheckStep::State state, const CallStatus& call,
                              const std::string& subject, Elapsed elapsed) {
  const CallFailure failure(call, subject, m_daemon.socketPath());
  const std::string about = subject.empty() ? "" : shown(subject) + ": ";
  m_steps.push_back({name, state, about + meaningOf(call, m_daemon.socketPath()), elapsed, failure});
  if (state == CheckStep::Failed) m_status = worse(m_status, failure.status());
}

void AccountCheck::addFact(const char* name, Fact isRefused, const std::string& yes, const std::string& no,
                           const std::string& attribute) {
  if (isRefused == Fact::Unknown)
    add(name, CheckStep::Problem, "the attribute " + attribute + " cannot be read");
  else if (isRefused == Fact::Yes)
    add(name, CheckStep::Problem, yes);
  else
    add(name, CheckStep::Ok, no);
}

void AccountCheck::run(const ObjectKey& key, const std::string& text, time_t now) {
  askDaemon();
  if (m_status != kFound) return;
  const auto user = lookUp(key, text);
  if (!user) return;
  checkGroups(*user);
  checkNameService(*user);
  const AccountState state(*user, now);
  checkAccount(state);
  checkPassword(state, now);
  checkLogin(state);
}

const CallFailure* AccountCheck::failure() const {
  return m_steps.back().failure ? &*m_steps.back().failure : nullptr;
}

void AccountCheck::askDaemon() {
  const Stopwatch watch;
  const CallStatus call = m_daemon.client().ping(evenIfAway());
  if (call.ok())
    add("daemon", CheckStep::Ok, "answers", watch.elapsed());
  else
    addFailure("daemon", CheckStep::Failed, call, "", watch.elapsed());
}

CallResult<const User> AccountCheck::lookUp(const ObjectKey& key, const std::string& text) {
  const Stopwatch watch;
  auto found = m_daemon.client().user(key, GROUP_MEMBERSHIP);
  if (!found)
    addFailure("lookup", CheckStep::Failed, found.status(), text, watch.elapsed());
  else if (found->isUnix())
    add("lookup", CheckStep::Ok,
        "uid " + std::to_string(found->getId()) + ", gid " + std::to_string(found->gid()) + ", " +
            shown(found->home()) + ", " + shown(found->shell()),
        watch.elapsed());
  else
    add("lookup", CheckStep::Warning, "no Unix profile: no account of this host", watch.elapsed());
  return found;
}

void AccountCheck::checkGroups(const User& user) {
  const bool isSummary = user.groupSids().size() > kManyGroups && !m_listsGroups;
  const Stopwatch watch;
  std::vector<GroupCall> calls;
  if (isSummary)
    calls = askForGroups(m_daemon, user);
  else
    for (const SID& sid : user.groupSids()) calls.push_back(askForGroup(m_daemon, sid));
  const std::vector<Membership> memberships = membershipsOf(m_daemon, user, std::move(calls));
  const microseconds elapsed = watch.elapsed();

  size_t resolved = 0;
  for (const Membership& membership : memberships) {
    const CallStatus& call = membership.call.result.status();
    if (!call.ok())
      addFailure("group", stateOf(call), call, membership.key, membership.call.elapsed);
    else if (!isSummary)
      add("group", CheckStep::Ok, groupText(membership), membership.call.elapsed);
    resolved += call.ok() ? 1 : 0;
  }
  if (isSummary)
    add("groups", CheckStep::Ok, std::to_string(resolved) + " of " + countText(memberships.size(), "group"),
        elapsed);
}

void AccountCheck::checkNameService(const User& user) {
  constexpr char kStep[] = "name-service";
  if (!user.isUnix()) return;
  const Stopwatch watch;
  const HostAccount host = hostAccountOf(user.unixName());
  switch (host.outcome) {
    case HostAccount::Found:
      break;
    case HostAccount::NotFound:
      return explainMissing(watch.elapsed());
    case HostAccount::TooSlow:
      return add(kStep, CheckStep::Problem, "no answer in time; 'fokrazo doctor' looks for the cause",
                 watch.elapsed());
    case HostAccount::Failed:
      return add(kStep, CheckStep::Warning, "getent(1) does not answer", watch.elapsed());
  }
  const std::string differences = difference("uid", host.uid, std::to_string(user.getId())) +
                                  difference("gid", host.gid, std::to_string(user.gid())) +
                                  difference("home", host.home, user.home()) +
                                  difference("shell", host.shell, user.shell());
  if (differences.empty())
    add(kStep, CheckStep::Ok, "agrees", watch.elapsed());
  else
    add(kStep, CheckStep::Problem, "disagrees: " + differences.substr(2), watch.elapsed());
}

// The name service does not know the user: that may be intended, or the doctor knows why.
void AccountCheck::explainMissing(microseconds elapsed) {
  constexpr char kAdvice[] = "; 'fokrazo doctor name-service' says what to do";
  Patient patient{m_daemon};
  for (const Finding& finding : cli::checkNameService(patient))
    if (finding.state != Finding::Ok)
      return add("name-service", finding.state == Finding::Warning ? CheckStep::Warning : CheckStep::Problem,
                 "not found: " + finding.text + kAdvice, elapsed);
  add("name-service", CheckStep::Problem, "not found, although the name service is configured", elapsed);
}

void AccountCheck::checkAccount(const AccountState& state) {
  const auto expiry = state.accountExpiry();
  addFact("account", state.disabled(), "disabled", "enabled", "userAccountControl");
  addFact("lockout", state.locked(), "locked", "not locked", "lockoutTime");
  addFact("expiry", state.expired(), expiry ? "expired " + timeText(*expiry) : "",
          expiry ? "expires " + timeText(*expiry) : "never expires", "accountExpires");
  addFact("logon-hours", state.outsideLogonHours(), "no logins in this hour", "logins allowed now",
          "logonHours");
}

void AccountCheck::checkPassword(const AccountState& state, time_t now) {
  constexpr char kStep[] = "password";
  std::string age;
  if (const auto set = state.passwordLastSet())
    age = "set " + timeText(*set) + " (" + countText((now - *set) / kDay, "day") + " ago), ";
  const auto expiry = state.passwordExpiry();
  const auto left = state.passwordDaysLeft();
  if (state.mustChangePassword() == Fact::Yes)
    add(kStep, CheckStep::Problem, "must be changed");
  else if (state.passwordExpired() == Fact::Yes)
    add(kStep, CheckStep::Problem, age + "expired" + (expiry ? ' ' + timeText(*expiry) : ""));
  else if (state.mustChangePassword() == Fact::Unknown)
    add(kStep, CheckStep::Warning, "the attribute pwdLastSet cannot be read");
  else if (state.passwordExpired() == Fact::Unknown)
    add(kStep, CheckStep::Warning, age + "its expiry is unknown");
  else if (left)
    add(kStep, CheckStep::Ok, age + "expires " + timeText(*expiry) + ", in " + countText(*left, "day"));
  else
    add(kStep, CheckStep::Ok, age + "never expires");
}

void AccountCheck::checkLogin(const AccountState& state) {
  const ValidationResult result = state.result();
  const LoginAnswer answer = answerOf(result).account;
  const std::string name = kPamNames[static_cast<size_t>(answer)];
  if (answer == LoginAnswer::Success)
    add("login", CheckStep::Ok, name);
  else
    add("login", CheckStep::Problem, name + ": " + LocalRpcSession::errorString(result));
}

}  // namespace cli
