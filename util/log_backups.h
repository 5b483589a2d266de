/// The old files of a log. Internal.
#pragma once

#include <string>

#include "util/include/unique_fd.h"

namespace vesk {

/// One rotation. The backups' names are the log's, "." and a number, 1 for the newest, and ".gz" behind it if
/// they are compressed; those of the other kind are left alone. Other processes may rotate at the same time:
/// neither overwrites what the other one has moved. Failures are not reported.
class LogBackups {
 public:
  /// `count` is how many are kept.
  LogBackups(std::string log, int count, bool compressed)
      : m_log(std::move(log)), m_count(count), m_compressed(compressed) {}

  /// Moves the log out of the way if it is still the open file `wanted`, then the backups up and the log into
  /// the first one's place. Where no place can be made the log stays.
  void takeLog(int wanted);
  /// Fills that place, if takeLog has only kept it free for a compressed file. It may have moved up with the
  /// rest meanwhile.
  void compress();

 private:
  std::string name(int number) const;
  bool claim(int wanted);
  void giveBack();
  bool makePlace();
  void moveUp(unsigned int flags) const;
  bool occupyFirst(unsigned int flags);

  const std::string m_log;
  const int m_count;
  const bool m_compressed;
  std::string m_taken;  // where the log is meanwhile: a name that nobody else uses
  UniqueFd m_first;     // the place of a compressed one
};

}  // namespace vesk
