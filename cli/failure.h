/// Why a command did not do what it was asked to: for people, as an exit status, and as data.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>

#include <fokrazo/call_status.h>
#include "cli/exit_status.h"

namespace cli {

/// Ends a command, or the answer to one of its keys. what() says in one line what failed and what that means.
class Failure : public std::runtime_error {
 public:
  Failure(ExitStatus status, const std::string& message, std::string advice = "")
      : std::runtime_error(message), m_status(status), m_advice(std::move(advice)) {}

  ExitStatus status() const { return m_status; }
  /// What to do about it; may be empty.
  const std::string& advice() const { return m_advice; }
  /// The call to the daemon that failed; null if it was something else.
  virtual const vesk::CallStatus* call() const { return nullptr; }

 private:
  ExitStatus m_status;
  std::string m_advice;
};

/// The command line is wrong.
class UsageError : public Failure {
 public:
  explicit UsageError(const std::string& message);
};

/// A file, or standard input, that cannot be read; errno says why.
class UnreadableError : public Failure {
 public:
  explicit UnreadableError(const std::string& name);
};

/// Not found, or not allowed.
class RefusedError : public Failure {
 public:
  explicit RefusedError(const std::string& message) : Failure(kRefused, message) {}
};

/// A call to the daemon that did not succeed.
class CallFailure : public Failure {
 public:
  /// `subject` is what the call was about, such as a name; may be empty. `socketPath` is that of the daemon.
  CallFailure(const vesk::CallStatus& call, const std::string& subject, const std::string& socketPath);
  const vesk::CallStatus* call() const override { return &m_call; }

 private:
  vesk::CallStatus m_call;
};

/// What became of a failed call, for people, such as "there is no such user". One line without terminal
/// controls.
std::string meaningOf(const vesk::CallStatus& call, const std::string& socketPath);
/// The exit status of a call.
ExitStatus exitStatusOf(const vesk::CallStatus& call);
/// The outcome and the step as identifiers: "deadline-passed", "receiving".
const char* idOf(vesk::CallOutcome outcome);
const char* idOf(vesk::CallStep step);

}  // namespace cli
