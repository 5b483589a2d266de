/// Base 64.
#pragma once

#include <optional>
#include <string>

namespace cli {

/// Decodes text in the standard alphabet (RFC 4648, section 4), with its padding or without. Returns nothing
/// if the text is anything else.
std::optional<std::string> decodeBase64(std::string text);

}  // namespace cli
