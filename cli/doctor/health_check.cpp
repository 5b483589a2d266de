#include <string>

#include <fokrazo/session.h>
#include "cli/doctor/call_finding.h"
#include "cli/doctor/checks.h"
#include "cli/shown.h"

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
  const auto asked = patient.daemon.client().health(evenIfAway());
  if (!asked) {
    addFailedCall(findings, patient, asked.status());
    return findings;
  }
  const Health& health = *asked;
  std::string text = LocalRpcSession::errorString(health.result);
  if (!health.text.empty()) text += ": " + shown(health.text);
  if (health.result == VR_SUCCESS) {
    findings.ok(text);
    return findings;
  }
  text += " (" + std::to_string(health.result) + ", " + std::to_string(health.value1) + ", " +
          std::to_string(health.value2) + ")";
  const Advice& row = adviceFor(health.result);
  findings.problem(text, row.advice, row.command);
  return findings;
}

}  // namespace cli
