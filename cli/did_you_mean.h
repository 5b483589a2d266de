/// Suggestions for misspelled words.
#pragma once

#include <string>
#include <vector>

namespace cli {

/// Returns the candidate that needs the fewest edits to become `word`, regardless of ASCII case; the first of
/// several. An edit inserts, removes or replaces one byte, or swaps two neighbours. Returns "" if every
/// candidate needs more than one edit for each three bytes of `word`, or more than three.
std::string closest(const std::string& word, const std::vector<std::string>& candidates);

}  // namespace cli
