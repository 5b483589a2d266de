/// Opens all of the library's files. Internal.
///
/// Every descriptor is close-on-exec from the start and above 2, so that a program that has closed its
/// standard streams does not write its output to one of these files. Opening never waits for the other end of
/// a FIFO, and never acquires a controlling terminal. On failure returns an empty UniqueFd with errno.
#pragma once

#include <sys/types.h>

#include <string>

#include "util/file/unique_fd.h"

namespace vesk {

/// Options of openFile, combined with "|". By default an existing file is opened for reading.
struct Open {
  enum Option : unsigned {
    Write = 1 << 0,
    ReadWrite = 1 << 1,
    Append = 1 << 2,
    Create = 1 << 3,     ///< created with `mode` if it is missing
    CreateNew = 1 << 4,  ///< created with `mode`; EEXIST if the name exists, even as a link
    Truncate = 1 << 5,
    Unfollowed = 1 << 6,  ///< ELOOP if the last component is a symbolic link; earlier links are followed
    Regular = 1 << 7,     ///< EISDIR or EINVAL for anything but a regular file
    Directory = 1 << 8,   ///< ENOTDIR for anything but a directory
    Location = 1 << 9,    ///< only for use in "at" calls; needs no read permission
  };
};

UniqueFd openFile(const std::string& path, unsigned options = 0, mode_t mode = 0);
/// As openFile; a relative `name` starts at `directory`.
UniqueFd openFileAt(int directory, const char* name, unsigned options = 0, mode_t mode = 0);
/// Creates a file that only its owner may access. `name` ends in "XXXXXX" and becomes the file's name.
UniqueFd openTemporaryFile(char* name);
/// Opens a file that passes the checks of SecureOpenForReading; `status` as there.
UniqueFd openSecureFile(const char* path, int* status);

/// Whether `error`, from opening with Unfollowed, cannot come from a regular file, but from a link, a socket,
/// or a device without a driver.
bool isNeverRegular(int error);

}  // namespace vesk
