/// DNs as keys: two spellings of one DN have one key.
#pragma once

#include <string>
#include <string_view>

namespace standin {

/// The key of a DN (RFC 4514): letters in lower case (ASCII alone), blanks around "," "=" "+" taken away,
/// every character that could be mistaken for a separator written as a backslash and two digits. A comma in a
/// key is therefore always a separator. Text that is no DN gives a key of its own; nothing fails.
std::string dnKey(std::string_view dn);

/// The key of the parent; empty for a DN of one part.
std::string_view parentKey(std::string_view key);

/// Whether the entry of `key` stands at or below the entry of `base`. The empty base is above all.
bool isWithin(std::string_view key, std::string_view base);

}  // namespace standin
