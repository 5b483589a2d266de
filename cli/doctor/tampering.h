/// Who could replace a file that programs trust.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "cli/doctor/finding.h"

namespace cli {

/// The folders above an absolute path, from the top down, on the way that is written and on the way that
/// symbolic links make of it. Without "/": its owner owns this program, too.
std::vector<std::string> foldersAbove(const std::string& path);

/// Adds a problem for the file and each folder above it that anybody but root and `alsoTrusted` owns, or that
/// others can write. Folders with the sticky bit may be writable. What does not exist is no problem here.
/// Returns whether there was none.
bool checkTampering(Findings& findings, const std::string& path,
                    std::optional<uid_t> alsoTrusted = std::nullopt);
/// The same for the folders alone.
bool checkFolders(Findings& findings, const std::string& path,
                  std::optional<uid_t> alsoTrusted = std::nullopt);

}  // namespace cli
