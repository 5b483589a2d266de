/// Opening files that only root can have put there.
#pragma once

#include <cstdio>

#include <fokrazo/export.h>

/// Why SecureOpenForReading refused. A file that breaks several rules is refused for the lowest line here.
enum SecureOpenStatus : int {
  SECURE_OPEN_OK = 0,
  SECURE_OPEN_MISSING = 1,         ///< there is no such file
  SECURE_OPEN_DENIED = 4,          ///< the caller may not look
  SECURE_OPEN_SYMLINK = 5,         ///< a symbolic link
  SECURE_OPEN_HARDLINKED = 6,      ///< it has another name
  SECURE_OPEN_FOREIGN_OWNER = 2,   ///< not root's
  SECURE_OPEN_WORLD_WRITABLE = 3,  ///< anybody may write to it
  SECURE_OPEN_FAILED = 7,          ///< anything else: not a regular file, or replaced while it was opened
};

/// Opens a regular file for reading if nobody but root can have written to it. Never waits for a FIFO.
/// Returns a stream that the caller closes, and sets `*status` to SECURE_OPEN_OK; otherwise returns null,
/// with the reason.
FOKRAZO_API FILE* SecureOpenForReading(const char* path, int* status);
/// As SecureOpenForReading; with `secure` 0 it opens any file.
FOKRAZO_API FILE* OpenForReading(const char* path, int* status, int secure);

namespace vesk {
using ::OpenForReading;
using ::SecureOpenForReading;
}  // namespace vesk
