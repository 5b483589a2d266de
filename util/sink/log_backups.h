/// The old files of a log. Internal.
#pragma once

#include <string>
#include <vector>

#include "util/file/unique_fd.h"

namespace vesk {

/// One rotation. A backup's name is the log's, ".", a number, 1 for the newest, and ".gz" if backups are
/// compressed; backups of the other kind are left alone. Processes and threads may rotate at the same time;
/// none overwrites another's files. During the rotation the log has a temporary name; a file that keeps it,
/// because its process was killed or the disk was full, becomes a backup at a later rotation. Failures are
/// not reported. Thread-safety: one thread; takeLog needs the log's lock, compress does not.
class LogBackups {
 public:
  /// Keeps `count` backups.
  LogBackups(std::string log, int count, bool compressed)
      : m_log(std::move(log)), m_count(count), m_compressed(compressed) {}

  /// If the log is still the open and locked file `wanted`, renames each backup to the next number and the
  /// log to the first backup. If the backups cannot be renamed, the log stays.
  void takeLog(UniqueFd wanted);
  /// Compresses the log into the first backup, unless backups are not compressed. That backup may have been
  /// renumbered meanwhile.
  void compress();

 private:
  struct Taken {
    std::string name;  // unique; empty if nothing was taken
    UniqueFd lock;     // marks it as in use
    UniqueFd place;    // the compressed file
  };

  std::string name(int number) const;
  std::vector<Taken> leftovers() const;
  Taken claim(UniqueFd wanted) const;
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
