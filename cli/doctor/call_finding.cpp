#include "cli/doctor/call_finding.h"

#include "cli/doctor/shell_word.h"

namespace cli {

namespace {

using vesk::CallOutcome;
using vesk::CallStatus;

constexpr char kLog[] = "journalctl -u brondalt -n 50";
constexpr char kRestart[] = "systemctl restart brondalt";

// "@" stands for the socket.
constexpr struct Row {
  CallOutcome outcome;
  Patient::State state;
  const char* advice;
  const char* command;
} kRows[] = {
    {CallOutcome::NotFound, Patient::Refuses, "the daemon's log has details", kLog},
    {CallOutcome::Refused, Patient::Refuses, "the daemon refuses this user; its log says why", kLog},
    {CallOutcome::Unavailable, Patient::Refuses, "the daemon's log says why", kLog},
    {CallOutcome::DaemonAway, Patient::Away,
     "the daemon ended without removing its socket, or closes connections; restart it", kRestart},
    {CallOutcome::DeadlinePassed, Patient::Away, "the daemon hangs; restart it", kRestart},
    {CallOutcome::UntrustedPeer, Patient::Away, "find out which process it is", "ss -xlp src @"},
    {CallOutcome::MalformedReply, Patient::Away,
     "the process that answers is not the daemon, or of another version; restart it", kRestart},
    {CallOutcome::LocalFailure, Patient::Refuses, "raise the limits, or close other programs", "ulimit -a"},
};
constexpr Row kOther = {CallOutcome::OutcomeUnknown, Patient::Away, "restart the daemon", kRestart};
constexpr Row kClosedSocket = {CallOutcome::Refused, Patient::Away, "let every user write to the socket",
                               "chmod a+rw @"};

const Row& rowOf(const CallStatus& call) {
  if (call.outcome == CallOutcome::Refused && call.step <= vesk::CallStep::Connecting) return kClosedSocket;
  for (const Row& row : kRows)
    if (row.outcome == call.outcome) return row;
  return kOther;
}

}  // namespace

void addFailedCall(Findings& findings, Patient& patient, const CallStatus& call) {
  const Row& row = rowOf(call);
  patient.state = row.state;
  std::string command = row.command;
  if (const size_t at = command.find('@'); at != std::string::npos)
    command.replace(at, 1, shellWord(patient.daemon.socketPath()));
  findings.problem(meaningOf(call, patient.daemon.socketPath()), row.advice, command);
}

}  // namespace cli
