/// The old files of a log. Internal.
#pragma once

#include <string>

#include "util/include/unique_fd.h"

namespace vesk {

/// One rotation. The backups' names are the log's, "." and a number, 1 for the newest, and ".gz" behind it if
/// they are compressed; those of the other kind are left alone. Failures are not reported.
class LogBackups {
 public:
  /// `count` is how many are kept.
  LogBackups(std::string log, int count, bool compressed)
      : m_log(std::move(log)), m_count(count), m_compressed(compressed) {}

  /// Moves the backups up, and the log into the first one's place. Requires that nobody else does so now.
  void takeLog();
  /// Fills that place, if takeLog has only kept it free for a compressed file. Other processes may rotate
  /// meanwhile: the place moves up with the rest.
  void compress();

 private:
  std::string name(int number) const;
  void moveUp() const;

  const std::string m_log;
  const int m_count;
  const bool m_compressed;
  std::string m_taken;  // what is to be compressed
  UniqueFd m_first;     // where to
};

}  // namespace vesk
