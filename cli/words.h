/// Splits a line into words, as a shell does without its expansions.
#pragma once

#include <string>
#include <vector>

namespace cli {

/// Blanks separate words; quotes ('…' and "…") and backslashes protect them. Inside '…' nothing is special,
/// inside "…" only the backslash. @throws UsageError a quote is not closed, or a backslash ends the line
std::vector<std::string> splitWords(const std::string& line);

}  // namespace cli
