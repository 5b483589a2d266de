/// Words for commands that a person copies to a shell.
#pragma once

#include <string>

namespace cli {

/// The text as one word of a Bourne shell command, quoted if necessary. Bytes that a terminal may obey become
/// escapes in $'…', which bash understands.
std::string shellWord(const std::string& text);

}  // namespace cli
