/// Conversion of times. Internal.
///
/// The C library converts times under a lock that a fork does not reset: a child would wait forever if
/// another thread of its parent was converting a time. So no function here takes that lock in such a child,
/// and the conversion to seconds never does.
#pragma once

#include <ctime>

namespace vesk {
namespace calendar {

/// Converts seconds since the epoch to UTC. Sets year, month, day, hour, minute and second.
tm utc(time_t seconds);
/// Converts UTC to seconds since the epoch; the month is from 0 to 11.
time_t toSeconds(const tm& utc);
/// The local time, with tm_gmtoff. In a child of a process that had threads, uses the parent's last known
/// offset from UTC. Thread-safe.
tm local(time_t seconds);

}  // namespace calendar
}  // namespace vesk
