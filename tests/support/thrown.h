/// What an action throws, as one line of text for comparisons.
#pragma once

#include <string>

#include <fokrazo/error_util.h>

namespace testsupport {

/// Class, code and message; "nothing" if it returns.
template <class Action>
std::string thrownBy(Action action) {
  try {
    action();
  } catch (const VESKException& error) {
    return std::string(error.className()) + " " + std::to_string(error.rc()) + " " + error.what();
  }
  return "nothing";
}

}  // namespace testsupport
