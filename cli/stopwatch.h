/// How long something takes.
#pragma once

#include <chrono>

namespace cli {

class Stopwatch {
 public:
  std::chrono::microseconds elapsed() const {
    return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - m_start);
  }

 private:
  const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

}  // namespace cli
