// Links only the shared library; the numbers must still come from it.

#include "tests/support/prelude.h"

namespace {

std::vector<long> draw(std::size_t count, long (*source)() = random) {
  std::vector<long> numbers(count);
  std::generate(numbers.begin(), numbers.end(), source);
  return numbers;
}

/// The underlying generator's first number for a seed.
std::vector<long> sequenceOf(long seed, std::size_t count) {
  srand48(seed);
  return draw(count, lrand48);
}

}  // namespace

TEST(RandomTest, TheClockSeedsTheFirstDrawAndLaterSeedsTakeEffect) {
  srandom(5);
  const time_t before = time(nullptr);
  const std::vector<long> first = draw(3);
  const time_t after = time(nullptr);  // the second may have changed meanwhile
  EXPECT_TRUE(first == sequenceOf(before, 3) || first == sequenceOf(after, 3));
  srandom(7);
  const std::vector<long> seeded = draw(3);
  EXPECT_EQ(seeded, sequenceOf(7, 3));
  srand(7);
  EXPECT_EQ(rand(), seeded[0]);
}

TEST(RandomTest, ThreadsOfTheProgramShareOneSequence) {
  std::vector<long> others;
  srandom(9);
  std::thread other([&] { others = draw(1000); });
  std::vector<long> drawn = draw(1000);
  other.join();
  drawn.insert(drawn.end(), others.begin(), others.end());
  std::vector<long> expected = sequenceOf(9, 2000);
  std::sort(drawn.begin(), drawn.end());
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(drawn, expected) << "each number once";
}
