#include "lrpc/client/breaker.h"
#include "tests/support/prelude.h"

namespace {

using std::chrono::milliseconds;
using vesk::Breaker;

class BreakerTest : public ::testing::Test {
 protected:
  // Whether it is open so many milliseconds after the last failure.
  bool isOpenAfter(int time) const { return breaker.isOpen(now + milliseconds(time)); }

  Breaker breaker;
  Breaker::Clock::time_point now = Breaker::Clock::now();
};

TEST_F(BreakerTest, EachFailureDoublesTheTimeUpToALimit) {
  ASSERT_TRUE(breaker.admit(now));
  int expected = 250;
  for (int i = 0; i < 10; ++i, expected = std::min(2 * expected, 15'000)) {
    const auto ticket = breaker.admit(now);
    ASSERT_TRUE(ticket);
    breaker.failed(*ticket, now);
    EXPECT_TRUE(isOpenAfter(expected * 3 / 4 - 1)) << expected;
    EXPECT_FALSE(breaker.admit(now + milliseconds(expected * 3 / 4 - 1))) << expected;
    EXPECT_FALSE(isOpenAfter(expected * 5 / 4 + 1)) << expected;
    now += milliseconds(expected * 5 / 4 + 1);
  }
}

TEST_F(BreakerTest, CallsThatFailTogetherCountOnce) {
  const auto first = breaker.admit(now);
  const auto second = breaker.admit(now);
  breaker.failed(*first, now);
  breaker.failed(*second, now);
  breaker.failed(Breaker::kUncounted, now);
  EXPECT_FALSE(isOpenAfter(250 * 5 / 4 + 1));
}

TEST_F(BreakerTest, OneCallTriesWhenTheTimeIsOver) {
  breaker.failed(*breaker.admit(now), now);
  now += milliseconds(400);
  const auto trial = breaker.admit(now);
  ASSERT_TRUE(trial);
  EXPECT_FALSE(breaker.admit(now)) << "the others wait for its outcome";
  breaker.succeeded();
  EXPECT_TRUE(breaker.admit(now));
  EXPECT_FALSE(isOpenAfter(0));
  breaker.failed(*breaker.admit(now), now);
  EXPECT_FALSE(isOpenAfter(250 * 5 / 4 + 1)) << "the first time is short again";
}

}  // namespace
