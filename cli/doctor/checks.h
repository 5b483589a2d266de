/// The checks of `fokrazo doctor`. Each has a file of its own, and returns what it found in the order of
/// importance.
#pragma once

#include "cli/daemon.h"
#include "cli/doctor/finding.h"

namespace cli {

/// What earlier checks have found out about the daemon.
struct Patient {
  Daemon& daemon;
  enum State {
    Answers,  // as far as known
    Refuses,  // talks, but not to this user
    Away,     // cannot be reached
  } state = Answers;
};

/// For calls of the checks: asks even if the daemon failed a moment ago.
inline vesk::CallOptions evenIfAway() {
  vesk::CallOptions options;
  options.evenIfAway = true;
  return options;
}

/// The socket, its owner and mode, and the folders above it. A socket that cannot be opened means Away.
Findings checkSocket(Patient& patient);
/// The process that listens.
Findings checkDaemon(Patient& patient);
/// The time of an exchange.
Findings checkPing(Patient& patient);
/// What the daemon says about its own condition.
Findings checkHealth(Patient& patient);
/// The difference between this host's clock and the domain's.
Findings checkClock(Patient& patient);
/// The domain controllers in DNS. Nothing if the machine is not joined.
Findings checkDns(Patient& patient);
/// The machine's joined state.
Findings checkJoined(Patient& patient);
/// The configuration file: who can change it, misspelled keys, and wrong values. Keys of other programs are
/// compared only with names that they resemble.
Findings checkConfiguration(Patient& patient);
/// The lines for accounts in /etc/nsswitch.conf, and the module that they name.
Findings checkNameService(Patient& patient);
/// The files in /etc/pam.d that mention the login module, and the module.
Findings checkPam(Patient& patient);

}  // namespace cli
