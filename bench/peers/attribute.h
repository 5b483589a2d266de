/// An attribute as a program holds it, for the peers that only point at theirs.
#pragma once

#include <string>
#include <vector>

namespace bench {

struct Attribute {
  Attribute(const std::string& itsName, size_t valueCount) : name(itsName), lowerName(itsName) {
    for (char& letter : lowerName)
      if (letter >= 'A' && letter <= 'Z') letter += 'a' - 'A';
    values.reserve(valueCount);
  }

  std::string name;
  std::string lowerName;
  std::vector<std::string> values;
};

}  // namespace bench
