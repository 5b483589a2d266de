// doctor: finds problems of this host, and gives advice.

#include <algorithm>
#include <cstdio>

#include "cli/command.h"
#include "cli/did_you_mean.h"
#include "cli/doctor/checks.h"

namespace cli {

namespace {

// In the order in which they run.
constexpr struct Check {
  const char* name;
  Findings (*run)(Patient& patient);
  bool asksDaemon;
} kChecks[] = {
    {"socket", checkSocket, false},
    {"daemon", checkDaemon, true},
    {"ping", checkPing, true},
    {"health", checkHealth, true},
    {"clock", checkClock, true},
    {"joined", checkJoined, false},
    {"dns", checkDns, false},
    {"configuration", checkConfiguration, false},
    {"name-service", checkNameService, false},
    {"pam", checkPam, false},
};

// A check that fails itself is a finding, and the others still run.
Findings examine(const Check& check, Patient& patient) {
  try {
    return check.run(patient);
  } catch (const std::exception& error) {
    Findings findings(check.name);
    findings.problem(std::string("cannot be examined: ") + shown(error.what()), "try it again alone",
                     std::string("fokrazo --verbose doctor ") + check.name);
    return findings;
  }
}

void print(Output& output, const Finding& finding) {
  static const char* const kStates[] = {"ok", "warning", "problem"};
  const std::string state = kStates[finding.state];
  std::string line = state + std::string(9 - state.size(), ' ') + finding.check + ": " + finding.text;
  if (finding.state != Finding::Ok)
    line += "\n         -> " + finding.advice + "\n         run: " + finding.command;
  Record record;
  record.text("check", finding.check).text("state", state).text("text", finding.text);
  record.text("advice", finding.advice).text("command", finding.command);
  output.record(record, line);
}

void refuseUnknown(const std::vector<std::string>& wanted) {
  std::vector<std::string> names;
  for (const Check& check : kChecks) names.emplace_back(check.name);
  for (const std::string& word : wanted) {
    if (std::find(names.begin(), names.end(), word) != names.end()) continue;
    const std::string near = closest(word, names);
    throw UsageError("doctor knows no check " + word + (near.empty() ? "" : "; did you mean " + near + '?'));
  }
}

ExitStatus doctor(Invocation& invocation) {
  const std::vector<std::string> wanted = invocation.arguments.operands();
  refuseUnknown(wanted);

  Patient patient{invocation.daemon};
  Finding::State worst = Finding::Ok;
  for (const Check& check : kChecks) {
    const bool isWanted =
        wanted.empty() || std::find(wanted.begin(), wanted.end(), check.name) != wanted.end();
    if (!isWanted || (check.asksDaemon && patient.state != Patient::Answers)) continue;
    for (const Finding& finding : examine(check, patient)) {
      print(invocation.output, finding);
      worst = std::max(worst, finding.state);
    }
    fflush(stdout);
  }
  if (patient.state == Patient::Away) return kNoDaemon;
  return worst == Finding::Problem ? kRefused : kFound;
}

constexpr char kNotes[] =
    "Checks, in this order:\n"
    "  socket         the daemon's socket: its owner, its mode, and the folders above it\n"
    "  daemon         the process that answers\n"
    "  ping           the time of an exchange\n"
    "  health         what the daemon says about itself\n"
    "  clock          this host's clock, compared with the domain's\n"
    "  joined         the joined state of this machine\n"
    "  dns            the domain's servers, as the name servers know them\n"
    "  configuration  the configuration file: its mode, misspelled keys and wrong values\n"
    "  name-service   /etc/nsswitch.conf and the module libnss_fokrazo.so.2\n"
    "  pam            /etc/pam.d and the module pam_fokrazo.so\n"
    "Without CHECK, all of them. Each line says ok, warning or problem; warnings and problems say\n"
    "what to do, and the next command to type.\n"
    "Exit status: 0 no problem, 1 a problem, 3 the daemon cannot be reached.\n";

const Command kCommands[] = {
    {"doctor",
     "[CHECK …]",
     "find out what is wrong with this host, and what to do about it",
     doctor,
     {},
     kNotes},
};

}  // namespace

Family doctorCommands() {
  return {"Find faults", kCommands, std::size(kCommands)};
}

}  // namespace cli
