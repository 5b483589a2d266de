/// Untrusted text on terminals: control characters, direction marks and bytes that are not UTF-8 are
/// replaced.
#pragma once

#include <string>

namespace cli {

/// A value that is safe to print: unchanged if it is UTF-8 without terminal controls, otherwise in
/// hexadecimal.
std::string shown(const std::string& value);
/// shown() for each line of a text.
std::string shownLines(const std::string& text);
/// A field of a passwd- or group-style line: separators and terminal controls are replaced with "?".
std::string lineField(const std::string& value);

}  // namespace cli
