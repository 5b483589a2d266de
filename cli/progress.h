/// A line on the terminal that counts while a command waits.
#pragma once

#include <chrono>
#include <cstddef>

namespace cli {

/// Writes to standard error, if that is a terminal, and wipes the line at the end.
class ProgressLine {
 public:
  /// Counts `what`, such as "users". Stays silent unless `isWanted`.
  ProgressLine(const char* what, bool isWanted);
  ~ProgressLine();
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  void update(size_t count);

 private:
  const char* m_what;
  const bool m_isWanted;
  bool m_isShown = false;
  std::chrono::steady_clock::time_point m_next;
};

}  // namespace cli
