/// Reading whole files for the properties. Internal.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>

#include "util/file/unique_fd.h"

namespace vesk {

/// No file of properties or of list items is read beyond this, so that a wrong path costs no more.
constexpr size_t kMaxPropertyFile = 64 * 1024 * 1024;

/// Opens a plain file for reading; none, with errno, for anything else. Never waits for a named pipe.
UniqueFd openPlainFile(const char* path);
/// Appends what is left of a file. False, with errno where the system refused, if that fails or there is too
/// much.
bool readBounded(int fd, std::string& text);
/// The same for a stream.
bool readBounded(std::istream& stream, std::string& text);

}  // namespace vesk
