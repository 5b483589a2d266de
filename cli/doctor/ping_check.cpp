#include <chrono>
#include <cstdio>

#include <fokrazo/error_util.h>
#include <fokrazo/ipcmessage.h>
#include <fokrazo/session.h>
#include "cli/doctor/checks.h"
#include "cli/output.h"

namespace cli {

using namespace vesk;

namespace {

constexpr double kSlowPing = 1000;  // milliseconds
constexpr char kLog[] = "journalctl -u brondalt -n 50";

}  // namespace

// Only one attempt: a second one could hide the fault.
Findings checkPing(Patient& patient) {
  Findings findings("ping");
  const auto start = std::chrono::steady_clock::now();
  try {
    IPCRequest request(IPC_OP_PING);
    IPCReply reply;
    patient.daemon.session().execute(request, reply, false);
  } catch (const SystemException& error) {
    patient.state = Patient::Refuses;
    findings.problem(error.what(), "the daemon refuses this user; its log says why", kLog);
    return findings;
  } catch (const VESKException& error) {
    patient.state = Patient::Away;
    findings.problem(std::string(error.className()) + ": " + error.what(),
                     "the daemon hangs, or the process that answers is not the daemon; restart it",
                     "systemctl restart brondalt");
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
