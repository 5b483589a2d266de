/// Compression of whole files, for rotated logs.
#pragma once

#include <fokrazo/export.h>

namespace vesk {

/// Write a compressed, or an expanded, copy of the file `from` as `to`. Nothing happens if an argument is
/// null or `from` does not exist; a failure ends the copy without a word. Thread-safe.
FOKRAZO_API void gzip(const char* from, const char* to);
FOKRAZO_API void gunzip(const char* from, const char* to);

/// As gzip, into an open file, whose descriptor it takes over (-1: nothing is copied), and removes `from`
/// once it is copied. What other processes append until it is removed comes along. False, with `from` left,
/// if not all could be copied.
bool moveCompressed(const char* from, int to);

}  // namespace vesk
