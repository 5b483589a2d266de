/// One result of `fokrazo doctor`.
#pragma once

#include <string>

namespace cli {

struct Finding {
  enum State : int {
    Ok,       // correct
    Warning,  // works, but an administrator should know
    Problem,  // does not work, or not as intended
  };

  State state;
  std::string check;   // what was examined, one word
  std::string text;    // what was found
  std::string advice;  // what to do about it; empty if Ok
};

}  // namespace cli
