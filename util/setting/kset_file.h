/// The files of settings and key sets, for the code that reads and writes them. Internal.
#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <string>
#include <vector>

#include <fokrazo/fixed_paths.h>
#include "util/file/replacement_file.h"

namespace vesk {

using paths::kKSetPrefix;
using paths::kUserDir;

/// The largest file that is read or written at all, in bytes.
constexpr size_t kMaxKSetFile = 1024 * 1024;

inline std::string settingPath(const std::string& dir, const std::string& name) {
  return dir + kKSetPrefix + name;
}

/// Whether the effective user is root.
bool isRootUser();
/// Whether a setting holds data of one domain controller. These have no limit of their own, and users have a
/// copy.
bool isDCSetting(const char* name);
/// Whether root must not read a file with that path and status: every user can create files in "user/", and
/// root's decisions must not depend on them.
bool isForeign(const std::string& path, const struct stat& status, const std::string& dataDir);

/// Throws IOException with the system's text; `literal` is a format for the path.
[[noreturn]] void throwFileFailure(int error, const char* literal, const std::string& path);
/// The first and the last step of replacing a file. @throws IOException "Cannot open file …", "Cannot write
/// file …", "Cannot rename file to …"
void openReplacement(ReplacementFile& file);
void commitReplacement(ReplacementFile& file, const std::string& path);
/// Removes a file if it exists. @throws IOException "Cannot remove file …"
void removeFile(const std::string& path);
/// The names of the entries of a directory without "." and "..".
/// @throws NotFoundException "Cannot open directory …"
std::vector<std::string> listKSetDirectory(const std::string& dir);

/// The literals of throwFileFailure that are used in more than one place.
constexpr char kCannotOpen[] = "Cannot open file %s";
constexpr char kCannotWrite[] = "Cannot write file %s";

}  // namespace vesk
