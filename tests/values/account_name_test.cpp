
#include "tests/support/rows.h"

namespace {

using namespace vesk;

std::string times(size_t count, const char* text) {
  std::string all;
  while (count-- > 0) all += text;
  return all;
}

// What the text safely is: "n" a name, "k" a key, "p" a path.
std::string kindsOf(const std::string& text) {
  const std::string kinds = std::string(isSafeAccountName(text) ? "n" : "") +
                            (isSafeAccountKey(text) ? "k" : "") + (isSafeAccountPath(text) ? "p" : "");
  return kinds.empty() ? "no" : kinds;
}

TEST(AccountName, OnlyWhatMeansTheSameEverywhereIsSafe) {
  for (const auto& [kinds, text] : testsupport::rowsOf<2>("values/rows.txt", "account names"))
    EXPECT_EQ(kindsOf(text), kinds) << text;
  EXPECT_EQ(kindsOf(times(255, "a")), "nk");
  EXPECT_EQ(kindsOf(times(256, "a")), "no");
  EXPECT_EQ(kindsOf(times(127, "ü") + "u"), "nk");
  EXPECT_EQ(kindsOf(times(128, "ü")), "no");
  EXPECT_EQ(kindsOf(times(2047, "/a") + "/"), "p");
  EXPECT_EQ(kindsOf(times(2048, "/a")), "no");
  for (const char c : std::string("!\"#%&'()*,/:;<=>?[]^`{|}~ \t"))
    EXPECT_FALSE(isSafeAccountName(std::string("a") + c + "b")) << c;
}

}  // namespace
