/// The `$` variables of the configuration file that the host's settings define. Internal.
#pragma once

#include <map>
#include <string>

namespace vesk {

/// JOINNAME, PREW2KNAME, SITE, DOMAIN and ZONE with their values; "<unknown>" for what the machine lacks.
/// Reads the settings' files. Thread-safe.
std::map<std::string, std::string> hostVariables();

}  // namespace vesk
