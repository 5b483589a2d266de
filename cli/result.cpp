#include "cli/result.h"

#include <string>

#include <fokrazo/session.h>
#include "cli/output.h"

namespace cli {

ExitStatus report(Output& output, const vesk::CallStatus& call) {
  const std::string text = vesk::LocalRpcSession::errorString(call.result);
  Record record;
  record.number("result", call.result).text("text", text).text("message", call.text);
  output.record(record, call.text.empty() || call.text == text ? text : text + ": " + shown(call.text));
  return kFound;
}

}  // namespace cli
