/// The operations of a session. Each has the bytes that it sends, possible replies with the outcome of each,
/// and its outcome with a stand-in that serves the sample directory.
#pragma once

#include <string>
#include <vector>

#include <fokrazo/shredder.h>
#include "tests/support/outcome_text.h"

namespace testsupport {

/// What happens to an operation whose connection is lost.
enum class Sent {
  Again,    ///< it is sent once more, on a new one
  Once,     ///< it fails
  InParts,  ///< it is several exchanges that belong to one connection
};

/// The passwords and tokens of an operation.
struct Secrets {
  vesk::Shredder first, second;
};
/// Those of the sample: the user's and the administrator's.
const Secrets& samplePasswords();

/// A reply, and what the operation then returns or throws, followed by its out arguments.
struct Answer {
  std::string message;
  std::string outcome;
  std::string logged{};
};
using Answers = std::vector<Answer>;

struct Operation {
  const char* name;
  std::string (*function)(vesk::LocalRpcSession& session, const Secrets& secrets);
  /// With the sample directory, however often it is repeated and whatever other clients do at the same time.
  /// Empty if it is not for the stand-in.
  std::string outcome;
  Sent sent = Sent::Again;
  std::string (*request)(const Secrets& secrets) = nullptr;  ///< null if there are several
  Answers answers{};                                         ///< the first is that of success
  std::string untouched{};                                   ///< the out arguments where no answer came
  std::string logged{};

  std::string make(vesk::LocalRpcSession& session, const Secrets& secrets = samplePasswords()) const {
    return function(session, secrets);
  }
};

/// Begin an operation: an expression, or a member function of `session`. The secrets are `p`.
#define ASK(...) \
#__VA_ARGS__, [](vesk::LocalRpcSession & session, [[maybe_unused]] const Secrets& p) { return __VA_ARGS__; }
#define CALL(...) ASK(outcomeOf([&] { return session.__VA_ARGS__; }))

/// Those for the stand-in, except stop, which ends it.
const std::vector<Operation>& operations();
/// Those of one exchange.
const std::vector<Operation>& exchanges();
const Operation& stopOperation();

/// Whether an outcome means that the exchange failed: here, on the way or in the daemon.
bool isFailure(const Operation& operation, const std::string& outcome);

/// A lookup's fields: the object's type, scope, kind of key, whether to ask the directory first and
/// memberships, as hexadecimal digits, and then its key.
std::string lookupFields(const std::string& header, const std::string& key);

// Operations with out arguments, as text: the outcome, then each argument. Before the call they are 5, "key",
// "why", "first" and "second". Of a session key that was set only the size is shown.
std::string renewed(vesk::LocalRpcSession& session, const std::string& user);
std::string mapped(vesk::LocalRpcSession& session, const std::string& name, unsigned options);
std::string samChanged(vesk::LocalRpcSession& session, const std::string& user,
                       const std::string& newPassword, const std::string& oldPassword,
                       const std::string& text);
std::string loggedOn(vesk::LocalRpcSession& session, const std::string& user, const std::string& domain,
                     const std::string& token, unsigned option);

}  // namespace testsupport
