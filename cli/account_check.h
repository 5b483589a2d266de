/// What `fokrazo check` looks at, step by step.
#pragma once

#include <chrono>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include <fokrazo/account_state.h>
#include <fokrazo/object_key.h>
#include <fokrazo/unixviews.h>
#include "cli/daemon.h"
#include "cli/exit_status.h"
#include "cli/failure.h"

namespace cli {

/// One thing that was examined.
struct CheckStep {
  enum State { Ok, Warning, Problem, Failed };

  std::string name;  // one word
  State state;
  std::string text;                                  // escaped
  std::optional<std::chrono::microseconds> elapsed;  // empty if nothing was asked, or many things at once
  std::optional<CallFailure> failure;                // if a call has failed
};

/// Examines one account: the daemon, the lookup, the groups, this host's name service, and what a login would
/// come to. Each part adds its steps.
class AccountCheck {
 public:
  /// With `listsGroups` each group has a step of its own, no matter how many there are.
  AccountCheck(Daemon& daemon, bool listsGroups) : m_daemon(daemon), m_listsGroups(listsGroups) {}

  /// `text` is the key as it was typed.
  void run(const vesk::ObjectKey& key, const std::string& text, time_t now);

  const std::vector<CheckStep>& steps() const { return m_steps; }
  /// Why the check ended without having looked at the account; null if it did.
  const CallFailure* failure() const;
  /// kRefused if there is a problem, or the status of a failed step.
  ExitStatus status() const { return m_status; }

 private:
  void askDaemon();
  vesk::CallResult<const vesk::User> lookUp(const vesk::ObjectKey& key, const std::string& text);
  void checkGroups(const vesk::User& user);
  void checkNameService(const vesk::User& user);
  void explainMissing(std::chrono::microseconds elapsed);
  void checkAccount(const vesk::AccountState& state);
  void checkPassword(const vesk::AccountState& state, time_t now);
  void checkLogin(const vesk::AccountState& state);

  using Elapsed = std::optional<std::chrono::microseconds>;
  void add(const char* name, CheckStep::State state, const std::string& text, Elapsed elapsed = {});
  void addFact(const char* name, vesk::AccountState::Fact isRefused, const std::string& yes,
               const std::string& no, const std::string& attribute);
  void addFailure(const char* name, CheckStep::State state, const vesk::CallStatus& call,
                  const std::string& subject, Elapsed elapsed);

  Daemon& m_daemon;
  const bool m_listsGroups;
  std::vector<CheckStep> m_steps;
  ExitStatus m_status = kFound;
};

}  // namespace cli
