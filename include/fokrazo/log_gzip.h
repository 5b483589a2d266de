/// Compression of whole files, for rotated logs.
#pragma once

#include <fokrazo/export.h>

namespace vesk {

/// Compress or expand the file `from` into the file `to`. Do nothing if an argument is null or `from` does
/// not exist. A failure ends the copy and is not reported. Thread-safe.
FOKRAZO_API void gzip(const char* from, const char* to);
FOKRAZO_API void gunzip(const char* from, const char* to);

/// Compresses `from` into the open file `to` and removes `from`. Takes ownership of the descriptor; -1 copies
/// nothing. Includes what other processes append in the meantime. Returns false, with `from` left in place,
/// if the copy is incomplete.
bool moveCompressed(const char* from, int to);

}  // namespace vesk
