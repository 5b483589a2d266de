/// The `$` variables of the configuration file that the host's settings define. Internal.
#pragma once

#include <map>
#include <string>

namespace vesk {

/// The values of JOINNAME, PREW2KNAME, SITE, DOMAIN and ZONE, "<unknown>" if missing. Reads the settings'
/// files. Thread-safe.
std::map<std::string, std::string> hostVariables();

}  // namespace vesk
