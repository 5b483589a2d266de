/// Failed calls to the daemon as findings.
#pragma once

#include <fokrazo/call_status.h>
#include "cli/doctor/checks.h"

namespace cli {

/// Adds a problem for a call that did not succeed, and notes what that says about the daemon.
void addFailedCall(Findings& findings, Patient& patient, const vesk::CallStatus& call);

}  // namespace cli
