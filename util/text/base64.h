/// Base 64. Internal.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string_view>

namespace vesk {

/// Decodes text in the standard alphabet with its padding (RFC 4648, section 4), strictly: rejects other
/// characters, missing padding and non-zero unused bits. Returns the number of bytes written to `out`, or -1
/// for text that is rejected or needs more than `size` bytes; `out` is then undefined.
ssize_t decodeBase64(std::string_view text, unsigned char* out, size_t size);

}  // namespace vesk
