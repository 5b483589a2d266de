/// Answers on their way to the exit status.
#pragma once

#include <fokrazo/error_util.h>
#include <fokrazo/ipc_exception.h>
#include "cli/exit_status.h"

namespace vesk {
class LocalRpcSession;
}

namespace cli {

class Output;

/// Prints a result with the daemon's own message, if it sent one; 0 is success, anything else a refusal.
ExitStatus report(Output& output, const vesk::LocalRpcSession& session, int result);

/// What `question` gives. `name` is what it asks for: if that is not there, the complaint begins with it.
/// @throws RefusedError
template <class Question>
decltype(auto) named(const std::string& name, Question question) {
  try {
    return question();
  } catch (const vesk::NotFoundException& error) {
    throw RefusedError(name + ": " + error.what());
  }
}

/// What `question` gives, an operation that says by an exception that there is nothing of that name.
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
