/// SIDs on the command line.
#pragma once

#include <string>

#include <fokrazo/sid.h>

namespace cli {

/// Reads a SID in its S-… form; the "S" may be a small letter. The library ignores what it cannot read, so a
/// mistyped SID could be somebody else's: here a text is accepted only if the SID prints as that text.
/// @throws UsageError
vesk::SID readSidText(const std::string& text);

}  // namespace cli
