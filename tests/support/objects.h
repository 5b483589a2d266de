/// Directory objects in a readable notation.
#pragma once

#include <fokrazo/adobject.h>

namespace testsupport {

/// An object with attributes such as "cn=Jo;mail=a;mail=b;sn=;none": one value, two, one without text, none.
inline vesk::ADObject objectOf(const std::string& dn, const std::string& attributes) {
  vesk::ADObject object(dn);
  std::istringstream all(attributes);
  for (std::string one; std::getline(all, one, ';');) {
    const size_t end = std::min(one.find('='), one.size());
    vesk::ADAttribute& attribute = object[one.substr(0, end)];
    if (end < one.size()) attribute.addVal(one.substr(end + 1), true, false);
  }
  return object;
}

}  // namespace testsupport
