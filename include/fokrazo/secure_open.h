/// Opening files that only root can have written.
#pragma once

#include <cstdio>

#include <fokrazo/export.h>

/// Why SecureOpenForReading refused. If a file breaks several rules, the first of them in this list is
/// reported.
enum SecureOpenStatus : int {
  SECURE_OPEN_OK = 0,
  SECURE_OPEN_MISSING = 1,         ///< there is no such file
  SECURE_OPEN_DENIED = 4,          ///< the caller lacks permission
  SECURE_OPEN_SYMLINK = 5,         ///< a symbolic link
  SECURE_OPEN_HARDLINKED = 6,      ///< it has another hard link
  SECURE_OPEN_FOREIGN_OWNER = 2,   ///< not owned by root
  SECURE_OPEN_WORLD_WRITABLE = 3,  ///< writable by everyone
  SECURE_OPEN_FAILED = 7,          ///< anything else: not a regular file, or replaced while it was opened
};

/// Opens a regular file for reading if only root can have written it. Never waits for a FIFO. Returns a
/// stream that the caller closes, with `*status` SECURE_OPEN_OK, or null with the reason in `*status`.
FOKRAZO_API FILE* SecureOpenForReading(const char* path, int* status);
/// As SecureOpenForReading; with `secure` 0 it opens any file.
FOKRAZO_API FILE* OpenForReading(const char* path, int* status, int secure);

namespace vesk {
using ::OpenForReading;
using ::SecureOpenForReading;
}  // namespace vesk
