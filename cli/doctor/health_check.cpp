#include <string>

#include <fokrazo/session.h>
#include "cli/doctor/checks.h"
#include "cli/output.h"

namespace cli {

using namespace vesk;

namespace {

struct Advice {
  int result;
  const char* advice;
  const char* command;
};

constexpr char kNetwork[] =
    "check the network, the name servers and the clock; then let the daemon try again";

constexpr Advice kAdvice[] = {
    {VR_NOT_JOINED, "join this machine to its domain", "fokrazo joined"},
    {VR_JOINED_ELSEWHERE, "join this machine to its domain again", "fokrazo joined"},
    {VR_SERVER_UNREACHABLE, kNetwork, "fokrazo network-changed"},
    {VR_DISCONNECTED_MODE, kNetwork, "fokrazo network-changed"},
    {VR_NETWORK_ERROR, kNetwork, "fokrazo network-changed"},
    {VR_NO_DNS_SERVER, kNetwork, "fokrazo network-changed"},
};
constexpr Advice kOther = {0, "see the daemon's log", "journalctl -u brondalt -n 50"};

const Advice& adviceFor(int result) {
  for (const Advice& row : kAdvice)
    if (row.result == result) return row;
  return kOther;
}

}  // namespace

Findings checkHealth(Patient& patient) {
  Findings findings("health");
  ValidationResult result = VR_SYSTEM_ERROR;
  int value1 = 0;
  int value2 = 0;
  std::string message;
  if (patient.daemon.session().systemHealthInfo(true, result, value1, value2, message) != 0) {
    findings.problem("the daemon does not answer", "restart it", "systemctl restart brondalt");
    return findings;
  }
  std::string text = LocalRpcSession::errorString(result);
  if (!message.empty()) text += ": " + shown(message);
  if (result == VR_SUCCESS) {
    findings.ok(text);
    return findings;
  }
  text += " (" + std::to_string(result) + ", " + std::to_string(value1) + ", " + std::to_string(value2) + ")";
  const Advice& row = adviceFor(result);
  findings.problem(text, row.advice, row.command);
  return findings;
}

}  // namespace cli
