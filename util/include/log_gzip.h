/// Compression of whole files, for rotated logs.
#pragma once

#include "util/include/export.h"

namespace vesk {

/// Write a compressed, or an expanded, copy of the file `from` as `to`. Nothing happens if an argument is
/// null or `from` does not exist; a failure ends the copy without a word. Thread-safe.
FOKRAZO_API void gzip(const char* from, const char* to);
FOKRAZO_API void gunzip(const char* from, const char* to);

}  // namespace vesk
