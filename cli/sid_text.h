/// SIDs on the command line.
#pragma once

#include <string>

#include <fokrazo/sid.h>

namespace cli {

/// Reads S-…, with the letter in either case. The library passes over what it cannot read, so that a mistyped
/// SID would be that of somebody else; here a text counts only if its SID prints as that text.
/// @throws UsageError
vesk::SID readSidText(const std::string& text);

}  // namespace cli
