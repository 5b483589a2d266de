/// The Unix side of a directory entry: name and numeric ids.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace standin {

class Entry;

/// The first value of attribute `first`, or of `second` if that is missing; empty without both. For
/// attributes of RFC 2307, with those of the older Unix schema as fallback.
const std::string& eitherValue(const Entry& entry, const std::string& first, const std::string& second);

/// The name on Unix hosts: `uid`, else `sAMAccountName`, else `cn`.
const std::string& unixName(const Entry& entry);

/// Parses a decimal number of 32 bits, signed or unsigned, as a Unix id: -2 is 4294967294.
std::optional<uint32_t> toUnixId(const std::string& text);

/// The uid of an account, the gid of a group; empty for an entry without a Unix profile.
std::optional<uint32_t> unixId(const Entry& entry);

}  // namespace standin
