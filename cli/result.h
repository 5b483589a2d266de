/// Turns what the daemon answered into the exit status.
#pragma once

#include <fokrazo/error_util.h>
#include <fokrazo/ipc_exception.h>
#include <fokrazo/validation_result.h>
#include "cli/exit_status.h"

namespace vesk {
class LocalRpcSession;
}

namespace cli {

class Output;

/// Prints a result with the daemon's own message, if it sent one. Result 0 is success; any other is a
/// refusal.
ExitStatus report(Output& output, const vesk::LocalRpcSession& session, vesk::ValidationResult result);

/// Returns what `question` returns. If it finds nothing, the message begins with `name`.
/// @throws RefusedError
template <class Question>
decltype(auto) named(const std::string& name, Question question) {
  try {
    return question();
  } catch (const vesk::NotFoundException& error) {
    throw RefusedError(name + ": " + error.what());
  }
}

/// Returns what `question` returns: an operation that reports a refusal by these exceptions.
/// @throws RefusedError
template <class Question>
auto orRefused(Question question) {
  try {
    return question();
  } catch (const vesk::IPCException& error) {
    throw RefusedError(error.what());
  } catch (const vesk::SystemException& error) {
    throw RefusedError(error.what());
  }
}

}  // namespace cli
