/// The old files of a log. Internal.
#pragma once

#include <string>
#include <vector>

#include "util/file/unique_fd.h"

namespace vesk {

/// One rotation. A backup's name is the log's, ".", a number, 1 for the newest, and ".gz" if backups are
/// compressed; backups of the other kind are left alone. Several processes, and threads, may rotate at the
/// same time: none overwrites what another one has moved. During the rotation the log has a temporary name; a
/// file that keeps it, because its process was killed or the disk was full, becomes a backup at a later
/// rotation. Failures are not reported. Thread-safety: belongs to one thread; takeLog is called under the
/// log's lock, compress without.
class LogBackups {
 public:
  /// Keeps `count` backups.
  LogBackups(std::string log, int count, bool compressed)
      : m_log(std::move(log)), m_count(count), m_compressed(compressed) {}

  /// Moves the log out of the way if it is still the open and locked file `wanted`, then the backups up by
  /// one, and the log into the first backup's place. If no place can be made, the log stays.
  void takeLog(UniqueFd wanted);
  /// Compresses the log into the place that takeLog has made for it; nothing if backups are not compressed.
  /// The place may have moved up with the rest meanwhile.
  void compress();

 private:
  struct Taken {
    std::string name;  // used by nobody else; empty if there is nothing
    UniqueFd lock;     // keeps others from taking it for a leftover
    UniqueFd place;    // where the compressed file goes
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
