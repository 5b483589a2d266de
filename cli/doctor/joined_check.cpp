#include <fokrazo/error_util.h>
#include <fokrazo/osutil.h>
#include <fokrazo/setting.h>
#include "cli/doctor/checks.h"
#include "cli/shown.h"

namespace cli {

using namespace vesk;

Findings checkJoined(Patient&) {
  Findings findings("joined");
  if (!joined()) {
    findings.problem("this machine is not joined to a domain",
                     "join it, unless that is under way; this shows when it is done", "fokrazo joined");
    return findings;
  }
  const std::string text = shown(GetSetting(SETTING_DOMAIN_NAME, "")) + " as " + shown(longJoinedHostName());
  try {
    CheckEssentialKSets();
    findings.ok(text);
  } catch (const IOException& error) {
    findings.problem(text + ", but: " + shown(error.what()), "join the machine again",
                     "fokrazo setting list");
  }
  return findings;
}

}  // namespace cli
