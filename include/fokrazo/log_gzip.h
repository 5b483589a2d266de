/// Compression of whole files, for rotated logs.
#pragma once

#include <fokrazo/export.h>

namespace vesk {

/// Write a compressed copy, or an expanded one, of the file `from` as `to`. Do nothing if an argument is null
/// or `from` does not exist. A failure ends the copy and is not reported. Thread-safe.
FOKRAZO_API void gzip(const char* from, const char* to);
FOKRAZO_API void gunzip(const char* from, const char* to);

/// As gzip, but into an open file, whose descriptor it takes over (-1: nothing is copied), and removes `from`
/// once it is copied. What other processes append until then is copied too. False, with `from` left, if not
/// all could be copied.
bool moveCompressed(const char* from, int to);

}  // namespace vesk
