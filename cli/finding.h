/// What a look at this host brought to light.
#pragma once

#include <string>

namespace cli {

/// One thing that was looked at.
struct Finding {
  enum State : int {
    Ok,       // as it should be
    Warning,  // works, but somebody should know
    Problem,  // does not work, or not as it was meant
  };

  State state;
  std::string check;   // what was looked at, one word
  std::string text;    // what was found
  std::string advice;  // what to do about it; empty if all is well
};

}  // namespace cli
