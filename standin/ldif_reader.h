/// Reads entries from an LDIF file (RFC 2849, version 1).
#pragma once

#include <functional>
#include <string>

#include "standin/entry.h"

namespace standin {

/// Reads `path` and hands every content record to `take`, in the file's order. Folded lines, base 64 values
/// and comments are understood; a record of changetype "add" counts as content.
/// @throws Error the file cannot be opened, or a record is no content record; the text names file and line.
void readLdif(const std::string& path, const std::function<void(Entry&&)>& take);

}  // namespace standin
