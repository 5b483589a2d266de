/// How the library opens files. Internal.
///
/// Every descriptor is close-on-exec from birth and above 2, so that the program's output never ends up in a
/// file that was opened while its standard streams were closed. Opening waits for no other process (a FIFO's
/// other end) and makes no terminal the controlling one. A failure returns an empty UniqueFd and leaves its
/// reason in errno.
#pragma once

#include <sys/types.h>

#include <string>

#include "util/file/unique_fd.h"

namespace vesk {

/// Options of openFile, combined with "|". Without one an existing file is opened for reading.
struct Open {
  enum Option : unsigned {
    Write = 1 << 0,
    ReadWrite = 1 << 1,
    Append = 1 << 2,
    Create = 1 << 3,     ///< made with `mode` if it is missing
    CreateNew = 1 << 4,  ///< made with `mode`; EEXIST if the name is taken, also by a link
    Truncate = 1 << 5,
    Unfollowed = 1 << 6,  ///< ELOOP if the last component is a symbolic link; earlier links are followed
    Regular = 1 << 7,     ///< EISDIR or EINVAL for anything but a regular file
    Directory = 1 << 8,   ///< ENOTDIR for anything but a directory
    Location = 1 << 9,    ///< only as the start of "at" calls; needs no read permission
  };
};

UniqueFd openFile(const std::string& path, unsigned options = 0, mode_t mode = 0);
/// As openFile; a relative `name` starts at `directory`.
UniqueFd openFileAt(int directory, const char* name, unsigned options = 0, mode_t mode = 0);
/// Makes a file that only its owner may use. `name` ends in "XXXXXX" and is changed to the file's name.
UniqueFd openTemporaryFile(char* name);
/// Opens a file that passes the checks of SecureOpenForReading; `status` as there.
UniqueFd openSecureFile(const char* path, int* status);

/// Whether opening with Unfollowed failed with an error that no regular file causes: the name belongs to a
/// link, a socket, or a device without a driver.
bool isNeverRegular(int error);

}  // namespace vesk
