/// Keys of lookups, from the command line.
#pragma once

#include <string>

#include <fokrazo/object_key.h>

namespace cli {

/// Reads a key. `by` says what it is (name, id, sid or guid); if it is empty, the form of the text decides.
/// @throws UsageError the text is no such key
vesk::ObjectKey readObjectKey(const std::string& text, const std::string& by);

}  // namespace cli
