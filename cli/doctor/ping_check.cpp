#include <chrono>
#include <cstdio>

#include "cli/doctor/call_finding.h"
#include "cli/doctor/checks.h"

namespace cli {

using namespace vesk;

namespace {

constexpr double kSlowPing = 1000;  // milliseconds
constexpr char kLog[] = "journalctl -u brondalt -n 50";

}  // namespace

Findings checkPing(Patient& patient) {
  Findings findings("ping");
  const auto start = std::chrono::steady_clock::now();
  const CallStatus call = patient.daemon.client().ping(evenIfAway());
  if (!call.ok()) {
    addFailedCall(findings, patient, call);
    return findings;
  }
  const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - start;
  char text[32];
  snprintf(text, sizeof text, "%.1f ms", elapsed.count());
  if (elapsed.count() < kSlowPing)
    findings.ok(text);
  else
    findings.warn(text, "the daemon is busy or waits for the directory; see its log", kLog);
  return findings;
}

}  // namespace cli
