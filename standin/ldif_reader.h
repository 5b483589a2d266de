/// Reads entries from an LDIF file (RFC 2849, version 1).
#pragma once

#include <functional>
#include <string>

#include "standin/entry.h"

namespace standin {

/// Reads `path` and passes every content record to `take`, in the file's order. Folded lines, base64 values
/// and comments are supported; a record with changetype "add" counts as content.
/// @throws Error the file cannot be opened, or a record is not a content record; what() has file and line
void readLdif(const std::string& path, const std::function<void(Entry&&)>& take);

}  // namespace standin
