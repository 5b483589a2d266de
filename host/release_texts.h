/// Parsers of release files. Internal. Pure functions that accept any bytes.
#pragma once

#include <string>

namespace vesk {

/// A distribution; unknown fields are empty.
struct Distribution {
  std::string os;
  std::string version;

  bool isComplete() const { return !os.empty() && !version.empty(); }
};

/// Parses os-release(5): NAME without a final " GNU/Linux", and VERSION_ID with VERSION_CODENAME in
/// parentheses.
Distribution readOsRelease(const std::string& text);
/// Parses the output of `lsb_release -a`. @throws std::out_of_range a line is too short for its kind
Distribution readLsbRelease(const std::string& text);
/// Parses a file such as "redhat-release" or "debian_version". Returns false if neither name nor content is
/// known.
/// @throws std::out_of_range the first line is too short for its kind
bool readReleaseFile(const std::string& name, const std::string& text, Distribution& found);

}  // namespace vesk
