/// SIDs on the command line.
#pragma once

#include <string>

#include <fokrazo/sid.h>

namespace cli {

/// Reads a SID in its S-… form; the "S" may be a small letter. The library ignores what it cannot read, so
/// that a mistyped SID would be somebody else's: here only a text that the SID prints again is accepted.
/// @throws UsageError
vesk::SID readSidText(const std::string& text);

}  // namespace cli
