/// The old files of a log. Internal.
#pragma once

#include <string>
#include <vector>

#include "util/file/unique_fd.h"

namespace vesk {

/// One rotation. The backups' names are the log's, "." and a number, 1 for the newest, and ".gz" behind it if
/// they are compressed; those of the other kind are left alone. Other processes may rotate at the same time:
/// neither overwrites what the other one has moved. Meanwhile the log has a name of its own; what keeps it,
/// since its process was killed or the disk was full, becomes a backup at a later rotation. Failures are not
/// reported.
class LogBackups {
 public:
  /// `count` is how many are kept.
  LogBackups(std::string log, int count, bool compressed)
      : m_log(std::move(log)), m_count(count), m_compressed(compressed) {}

  /// Moves the log out of the way if it is still the open and locked file `wanted`, then the backups up and
  /// the log into the first one's place. Where no place can be made the log stays.
  void takeLog(int wanted);
  /// Fills that place, if takeLog has only kept it free for a compressed file. It may have moved up with the
  /// rest meanwhile.
  void compress();

 private:
  struct Taken {
    std::string name;  // that nobody else uses; empty if there is nothing
    UniqueFd lock;     // of a left-over
    UniqueFd place;    // where a compressed one goes
  };

  std::string name(int number) const;
  std::vector<Taken> leftovers() const;
  Taken claim(int wanted) const;
  void giveBack(Taken& log) const;
  bool makePlace(Taken& taken) const;
  void moveUp(unsigned int flags) const;
  bool occupyFirst(Taken& taken, unsigned int flags) const;

  const std::string m_log;
  const int m_count;
  const bool m_compressed;
  std::vector<Taken> m_placed;  // oldest first
};

}  // namespace vesk
