/// Detects a trailing escape. Internal.
#pragma once

#include <cstddef>
#include <string_view>

namespace vesk {

/// Whether the text ends in an odd number of backslashes, so that a character after it would be escaped.
inline bool endsEscaped(std::string_view text) {
  const size_t last = text.find_last_not_of('\\');
  const size_t run = last == text.npos ? text.size() : text.size() - last - 1;
  return run % 2 != 0;
}

}  // namespace vesk
