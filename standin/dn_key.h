/// DNs as keys: all spellings of a DN have the same key.
#pragma once

#include <string>
#include <string_view>

namespace standin {

/// The key of a DN (RFC 4514): ASCII letters in lower case, no blanks around "," "=" "+", and every character
/// that could be mistaken for a separator as a backslash and two hexadecimal digits. So a comma in a key is
/// always a separator. Accepts any text.
std::string dnKey(std::string_view dn);

/// The key of the parent; empty for a DN with one part.
std::string_view parentKey(std::string_view key);

/// Whether `key` is `base` or below it. Everything is below the empty base.
bool isWithin(std::string_view key, std::string_view base);

}  // namespace standin
