#include "cli/run.h"

#include <exception>

#include "cli/command.h"

namespace cli {

ExitStatus guarded(Output& output, const std::function<ExitStatus()>& task) {
  try {
    return task();
  } catch (const Failure& failure) {
    output.fail(failure);
    return failure.status();
  } catch (const std::exception& error) {
    output.fail(Failure(kFailed, error.what()));
    return kFailed;
  }
}

ExitStatus runCommand(const std::string& name, Arguments& arguments, Output& output, Daemon& daemon) {
  const Command& command = commandNamed(name);
  arguments.requireOptionsOf(name, command.options);
  Invocation invocation{arguments, output, daemon};
  return command.run(invocation);
}

}  // namespace cli
