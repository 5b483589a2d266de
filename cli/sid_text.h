/// SIDs on the command line.
#pragma once

#include <string>

#include <fokrazo/sid.h>

namespace cli {

/// Parses a SID in its S-… form; "s" is accepted too. The library ignores what it cannot parse, so a mistyped
/// SID could match another account; here the SID must print as the same text. @throws UsageError
vesk::SID readSidText(const std::string& text);

}  // namespace cli
