// Safe names and paths of accounts.

#include <gtest/gtest.h>

#include <string>

#include <fokrazo/account_name.h>

namespace {

using namespace vesk;

std::string times(size_t count, const char* text) {
  std::string all;
  while (count-- > 0) all += text;
  return all;
}

struct Row {
  std::string text;
  bool isName;
  bool isKey;
  bool isPath;
};

TEST(AccountName, OnlyWhatMeansTheSameEverywhereIsSafe) {
  const Row rows[] = {
      {"lquispe", true, true, false},
      {"Büro", true, true, false},
      {"अमित", true, true, false},
      {"𝔘ser", true, true, false},
      {"_a.b-c+d@example.com", true, true, false},
      {"1a", true, true, false},
      {"LINUX01$", true, true, false},
      {"EXAMPLE\\lquispe", false, true, false},
      {times(255, "a"), true, true, false},
      {times(256, "a"), false, false, false},
      {times(127, "ü") + "u", true, true, false},
      {times(128, "ü"), false, false, false},
      {"", false, false, true},
      {"$", false, false, false},
      {"a$b", false, false, false},
      {"10060", false, false, false},
      {"10060$", true, true, false},
      {"-a", false, false, false},
      {"+a", false, false, false},
      {".", false, false, false},
      {"..", false, false, false},
      {".a", false, false, false},
      {"@#", false, false, false},
      {"../x", false, false, false},
      {"$(id)", false, false, false},
      {"a b", false, false, false},
      {"a\\b\\c", false, false, false},
      {"\\b", false, false, false},
      {"a\\", false, false, false},
      {"a\\-b", false, false, false},
      {"a\nb", false, false, false},
      {std::string("a\0b", 3), false, false, false},
      {"a\x7f", false, false, false},
      {"a\xfc", false, false, false},              // Latin-1
      {"a\xc0\xaf", false, false, false},          // overlong "/"
      {"a\xe0\x80\xaf", false, false, false},      // overlong "/"
      {"a\xf0\x80\x80\xaf", false, false, false},  // overlong "/"
      {"a\xed\xa0\x80", false, false, false},      // a surrogate
      {"a\xf4\x90\x80\x80", false, false, false},  // above U+10FFFF
      {"a\xc3", false, false, false},              // cut
      {"a\xf0\x9d\x94", false, false, false},      // cut
      {"a\xc2\x9b", false, false, false},          // a control character of two bytes
      {"a\u00a0", false, false, false},            // a blank
      {"a\u00ad", false, false, false},            // visible only at line ends
      {"a\u200b", false, false, false},            // zero width
      {"a\u202e", false, false, false},            // reverses the text
      {"a\u2067", false, false, false},
      {"a\u3000", false, false, false},
      {"a\ufeff", false, false, false},
      {"a\U000e0041", false, false, false},
      {"a\U0001ffff", false, false, false},
      {"/", false, false, true},
      {"/home/Büro/l quispe/", false, false, true},
      {"/opt/local shells/fish", false, false, true},
      {"/home/.a..b/..c", false, false, true},
      {"/home/./a", false, false, false},
      {"/home/../root", false, false, false},
      {"/..", false, false, false},
      {"home/a", false, false, false},
      {"/home/$(id)", false, false, false},
      {"/home/a:b", false, false, false},
      {"/home/a\nb", false, false, false},
      {"/home/\xfc", false, false, false},
      {times(2047, "/a") + "/", false, false, true},
      {times(2048, "/a"), false, false, false},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(isSafeAccountName(row.text), row.isName) << row.text;
    EXPECT_EQ(isSafeAccountKey(row.text), row.isKey) << row.text;
    EXPECT_EQ(isSafeAccountPath(row.text), row.isPath) << row.text;
  }
  for (const char c : std::string("!\"#%&'()*,/:;<=>?[]^`{|}~ \t"))
    EXPECT_FALSE(isSafeAccountName(std::string("a") + c + "b")) << c;
}

}  // namespace
