/// Calendar times. Internal.
///
/// The C library converts times under a lock that a fork does not reset: a child would wait for ever if
/// another thread of its parent was converting one. So nothing here takes that lock in such a child, and the
/// conversion to seconds never does.
#pragma once

#include <ctime>

namespace vesk {
namespace calendar {

/// The UTC time with that many seconds since the epoch. Sets year, month, day, hour, minute and second.
tm utc(time_t seconds);
/// Seconds since the epoch of a UTC time; the month is from 0 to 11.
time_t toSeconds(const tm& utc);
/// The local time, with tm_gmtoff. In the child of a process that had threads, local time is what its parent
/// last knew as the difference from UTC. Thread-safe.
tm local(time_t seconds);

}  // namespace calendar
}  // namespace vesk
