/// What goes wrong in the stand-in itself.
#pragma once

#include <stdexcept>

namespace standin {

/// what() is one line for a person. Failures of the library keep the library's own classes.
class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace standin
