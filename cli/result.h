/// Turns the daemon's results into exit statuses.
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

/// Prints a result, and the daemon's message if there is one. Every result but 0 is a refusal.
ExitStatus report(Output& output, const vesk::LocalRpcSession& session, vesk::ValidationResult result);

/// Returns what `question` returns. The message of "not found" begins with `name`. @throws RefusedError
template <class Question>
decltype(auto) named(const std::string& name, Question question) {
  try {
    return question();
  } catch (const vesk::NotFoundException& error) {
    throw RefusedError(name + ": " + error.what());
  }
}

/// Returns what `question` returns, and turns the exceptions for refusals into RefusedError.
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
