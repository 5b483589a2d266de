#include "util/thread/calendar.h"

#include "tests/support/scratch_test.h"
#include "tests/support/workers.h"
#include "tests/support/wrapped.h"

using namespace vesk;

static int gConversions = 0;
WRAPPED(tm*, localtime_r, (const time_t* seconds, tm* fields), ++gConversions,
        __real_localtime_r(seconds, fields))

namespace {

auto parts(const tm& fields) {
  return std::make_tuple(fields.tm_year, fields.tm_mon, fields.tm_mday, fields.tm_hour, fields.tm_min,
                         fields.tm_sec);
}

TEST(Calendar, AgreesWithTheCLibraryFromTheYear1To9999) {
  constexpr time_t kFirst = -62135596800, kLast = 253402300799, kStep = 17 * 86400 + 3661;
  for (time_t seconds = kFirst; seconds <= kLast; seconds += kStep) {
    tm expected{};
    gmtime_r(&seconds, &expected);
    const tm fields = calendar::utc(seconds);
    ASSERT_EQ(parts(fields), parts(expected)) << seconds;
    ASSERT_EQ(calendar::toSeconds(fields), seconds);
  }
}

// The C library's conversion takes a lock that another thread of the parent may have held.
TEST(Calendar, AChildOfThreadsConvertsByItself) {
  setenv("TZ", "XYZ-05:30", 1);
  tzset();
  const time_t leapDay = 951782400;  // 2000-02-29 00:00 UTC
  const auto expected = parts(calendar::local(leapDay));
  EXPECT_EQ(gConversions, 1);
  Worker([] {});
  testsupport::checkInChild([&] {
    const tm local = calendar::local(leapDay);
    EXPECT_EQ(parts(local), expected);
    EXPECT_EQ(local.tm_gmtoff, 19800);
    EXPECT_EQ(gConversions, 1);
  });
}

}  // namespace
