// Links the shared library and nothing else of the project: the numbers must come from it all the same.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <thread>
#include <vector>

namespace {

std::vector<long> draw() {
  std::vector<long> numbers(3);
  std::generate(numbers.begin(), numbers.end(), random);
  return numbers;
}

/// What the generator under the library gives for a seed.
std::vector<long> sequenceOf(long seed) {
  srand48(seed);
  std::vector<long> numbers(3);
  std::generate(numbers.begin(), numbers.end(), lrand48);
  return numbers;
}

}  // namespace

TEST(RandomTest, TheClockSeedsTheFirstDrawAndOnlyLaterSeedsHold) {
  srandom(5);
  const time_t before = time(nullptr);
  const std::vector<long> first = draw();
  const time_t after = time(nullptr);  // the second may have changed meanwhile
  EXPECT_TRUE(first == sequenceOf(before) || first == sequenceOf(after));
  srandom(7);
  const std::vector<long> seeded = draw();
  EXPECT_EQ(seeded, sequenceOf(7));
  srand(7);
  EXPECT_EQ(rand(), seeded[0]);
}

TEST(RandomTest, ThreadsThatTheLibraryDoesNotKnowDrawTheSameNumbersBetweenThem) {
  constexpr int kDraws = 1000;
  std::vector<long> drawn(2 * kDraws), expected(2 * kDraws);
  srandom(9);
  std::thread other([&] { std::generate_n(drawn.begin(), kDraws, random); });
  std::generate_n(drawn.begin() + kDraws, kDraws, random);
  other.join();
  srand48(9);
  std::generate(expected.begin(), expected.end(), lrand48);
  std::sort(drawn.begin(), drawn.end());
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(drawn, expected) << "each number once";
}
