#include "util/thread/calendar.h"

#include <atomic>

#include "util/thread/fork_locks.h"

namespace vesk {
namespace calendar {

namespace {

constexpr time_t kSecondsPerDay = 86400;
constexpr long kDaysPerEra = 146097;   // an era is 400 years, the calendar's period
constexpr long kDaysToEpoch = 719468;  // from 0000-03-01 to 1970-01-01

std::atomic<long> gOffset{0};  // of local time from UTC, in seconds

long floorDivide(long number, long divisor) {
  return number / divisor - (number % divisor < 0);
}

}  // namespace

// Years begin in March here, so that a leap day is the last day of its year.
tm utc(time_t seconds) {
  const long days = floorDivide(seconds, kSecondsPerDay);
  const long second = seconds - days * kSecondsPerDay;
  const long sinceStart = days + kDaysToEpoch;
  const long era = floorDivide(sinceStart, kDaysPerEra);
  const long dayOfEra = sinceStart - era * kDaysPerEra;
  const long year = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const long dayOfYear = dayOfEra - (365 * year + year / 4 - year / 100);
  const long month = (5 * dayOfYear + 2) / 153;  // 0 is March
  tm fields{};
  fields.tm_mday = static_cast<int>(dayOfYear - (153 * month + 2) / 5 + 1);
  fields.tm_mon = static_cast<int>(month < 10 ? month + 2 : month - 10);
  fields.tm_year = static_cast<int>(era * 400 + year + (month >= 10) - 1900);
  fields.tm_hour = static_cast<int>(second / 3600);
  fields.tm_min = static_cast<int>(second / 60 % 60);
  fields.tm_sec = static_cast<int>(second % 60);
  return fields;
}

time_t toSeconds(const tm& utc) {
  const long month = utc.tm_mon >= 2 ? utc.tm_mon - 2 : utc.tm_mon + 10;
  const long year = utc.tm_year + 1900L - (utc.tm_mon < 2);
  const long era = floorDivide(year, 400);
  const long yearOfEra = year - era * 400;
  const long dayOfYear = (153 * month + 2) / 5 + utc.tm_mday - 1;
  const long dayOfEra = 365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  const time_t days = era * kDaysPerEra + dayOfEra - kDaysToEpoch;
  return ((days * 24 + utc.tm_hour) * 60 + utc.tm_min) * 60 + utc.tm_sec;
}

tm local(time_t seconds) {
  tm fields{};
  if (!isChildOfThreads() && localtime_r(&seconds, &fields) != nullptr) {
    gOffset.store(fields.tm_gmtoff, std::memory_order_relaxed);
    return fields;
  }
  const long offset = gOffset.load(std::memory_order_relaxed);
  fields = utc(seconds + offset);
  fields.tm_gmtoff = offset;
  return fields;
}

}  // namespace calendar
}  // namespace vesk
