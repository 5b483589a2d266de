/// The directory's times: ticks of 100 nanoseconds since 1601-01-01. Durations are negative.
#pragma once

#include <cstdint>
#include <ctime>

namespace standin {

using FileTime = int64_t;

constexpr int64_t kTicksPerSecond = 10000000;
constexpr int64_t kSecondsPerDay = 86400;
/// Seconds from 1601 to the Unix epoch.
constexpr int64_t kSecondsBeforeEpoch = 11644473600;
/// An infinite duration.
constexpr FileTime kNeverEnds = INT64_MIN;

/// 0, -1 and the largest number all mean "never".
inline bool isNever(FileTime time) {
  return time <= 0 || time == INT64_MAX;
}

inline int64_t toUnixTime(FileTime time) {
  return time / kTicksPerSecond - kSecondsBeforeEpoch;
}

inline FileTime fromUnixTime(time_t time) {
  return (time + kSecondsBeforeEpoch) * kTicksPerSecond;
}

}  // namespace standin
