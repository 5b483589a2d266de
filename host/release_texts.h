/// Parsers for the texts that describe a distribution. Internal. Pure functions; texts may hold any bytes.
#pragma once

#include <string>

namespace vesk {

/// A distribution; what is unknown is empty.
struct Distribution {
  std::string os;
  std::string version;

  bool isComplete() const { return !os.empty() && !version.empty(); }
};

/// The text of os-release(5): NAME without " GNU/Linux" at its end, and VERSION_ID with VERSION_CODENAME in
/// parentheses.
Distribution readOsRelease(const std::string& text);
/// The output of `lsb_release -a`. @throws std::out_of_range a line is too short for its kind
Distribution readLsbRelease(const std::string& text);
/// A file such as "redhat-release" or "debian_version" by its name and content. False if neither says
/// anything.
/// @throws std::out_of_range the first line is too short for its kind
bool readReleaseFile(const std::string& name, const std::string& text, Distribution& found);

}  // namespace vesk
