#include <chrono>
#include <cmath>
#include <cstdlib>

#include <fokrazo/adobject.h>
#include <fokrazo/session.h>
#include "cli/doctor/call_finding.h"
#include "cli/doctor/checks.h"

namespace cli {

using namespace vesk;

namespace {

using Clock = std::chrono::system_clock;

// Kerberos refuses tickets beyond its limit (RFC 4120, 1.6); seconds.
constexpr long kProblem = 300;
constexpr long kWarning = 60;
constexpr long kUnknown = -1;
constexpr char kSet[] = "chronyc makestep";

double now() {
  return std::chrono::duration<double>(Clock::now().time_since_epoch()).count();
}

// The time of the root entry (RFC 4512, 5.1), in whole seconds; kUnknown if it has none.
long askForTime(LocalRpcSession& session) {
  const char* attributes[] = {"currentTime", nullptr};
  const ADObjectList found = session.ldapSearch("", "", "(objectClass=*)", attributes, ScopeBase, 1, false);
  return found.empty() ? kUnknown : ADObject(*found.begin()).getTime(attributes[0], kUnknown);
}

// Such as "1 h 5 min".
std::string durationText(long seconds) {
  const struct {
    const char* unit;
    long size;
  } units[] = {{" d", 86400}, {" h", 3600}, {" min", 60}, {" s", 1}};
  std::string text;
  for (const auto& row : units) {
    if (seconds < row.size) continue;
    if (!text.empty()) return text + ' ' + std::to_string(seconds / row.size) + row.unit;
    text = std::to_string(seconds / row.size) + row.unit;
    seconds %= row.size;
  }
  return text;
}

// `margin` is by how much the measurement may be wrong.
void judge(Findings& findings, double difference, double margin) {
  const long ahead = std::lround(difference);
  const long skew = std::labs(ahead);
  if (std::fabs(difference) <= margin) return findings.ok("as the domain's");
  const std::string text = durationText(skew) + (ahead > 0 ? " ahead of" : " behind") + " the domain's";
  if (skew > kProblem)
    findings.problem(text + "; Kerberos refuses logins above 5 min", "set the clock", kSet);
  else if (skew > kWarning)
    findings.warn(text + "; Kerberos refuses logins above 5 min", "set the clock", kSet);
  else
    findings.ok(text);
}

}  // namespace

Findings checkClock(Patient& patient) {
  Findings findings("clock");
  long remote = kUnknown;
  double before = 0;
  double after = 0;
  const CallStatus call = patient.daemon.client().call(
      "clock", Client::Repeat::Harmless,
      [&](LocalRpcSession& session) {
        before = now();
        remote = askForTime(session);
        after = now();
      },
      evenIfAway());
  if (!call.ok() || remote == kUnknown) {
    const std::string why =
        call.ok() ? "the directory does not tell it" : meaningOf(call, patient.daemon.socketPath());
    findings.warn("the domain's time is unknown: " + why, "compare this host's clock with another source",
                  "chronyc tracking");
    return findings;
  }
  // The directory read its clock at some moment between the two, and tells whole seconds.
  judge(findings, (before + after) / 2 - (static_cast<double>(remote) + 0.5), (after - before) / 2 + 1);
  return findings;
}

}  // namespace cli
