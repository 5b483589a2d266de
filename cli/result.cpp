#include "cli/result.h"

#include <string>

#include <fokrazo/session.h>
#include "cli/output.h"

namespace cli {

ExitStatus report(Output& output, const vesk::LocalRpcSession& session, vesk::ValidationResult result) {
  const std::string text = vesk::LocalRpcSession::errorString(result);
  const std::string& message = session.statusMessage();
  Record record;
  record.number("result", result).text("text", text).text("message", message);
  output.record(record, message.empty() || message == text ? text : text + ": " + shown(message));
  return result == vesk::VR_SUCCESS ? kFound : kRefused;
}

}  // namespace cli
