#include <fokrazo/strutil.h>

#include <fokrazo/byteorder.h>
#include <fokrazo/sysrights.h>
#include "util/text/base64.h"

// As in a locale of ISO 8859-1.
extern "C" int isprint(int c) noexcept {
  return (' ' <= c && c <= '~') || c >= 0xa0;
}

namespace {

using Strings = std::vector<std::string>;
using StringList = std::list<std::string>;

TEST(StrUtil, NumbersAndTimesToText) {
  EXPECT_EQ(itoa(-1, 16) + " " + itoa(-1, 8) + " " + itoa(INT_MIN, 10), "ffffffff 37777777777 -2147483648");
  EXPECT_EQ(ulltoa(ULLONG_MAX, 8) + " " + ulltoa(0, 16), "1777777777777777777777 0");
  EXPECT_EQ(dbltoa(1e300).size(), 63U);
  const std::pair<const char*, unsigned int> rows[] = {
      {"010", 8},
      {"-2", UINT_MAX - 1},
      {"\t -4294967295", 1},
      {"-4294967296", UINT_MAX},
      {"4294967296", UINT_MAX},
      {"18446744069414584321", UINT_MAX},  // -4294967295 where only the range is looked at
      {"99999999999999999999", UINT_MAX},
      {"-18446744073709551615", UINT_MAX},
  };
  for (const auto& [text, number] : rows) EXPECT_EQ(atoui(text), number) << text;
  setenv("TZ", "UTC", 1);
  tzset();
  const time_t day = 86400, never = LONG_MAX;
  EXPECT_EQ(strtime(&day) + strtime(&never), "Fri Jan  2 00:00:00 1970ctime_r failed");
}

TEST(StrUtil, CaseTrimAndSearch) {
  EXPECT_EQ(upper("aZ\xe9-") + lower("aZ\xc9-"), "AZ\xe9-az\xc9-");
  EXPECT_EQ(lower(std::u16string(u"AbC")), u"abc");
  EXPECT_EQ(trimWhiteSpace("\v\f \t\r\na b\n") + trimWhiteSpace(" \t"), "a b");
  const char* const list[] = {"One", "Two", nullptr};
  EXPECT_TRUE(contains(list, "two") && contains("none", "On") && contains("HIT", "it"));
  EXPECT_FALSE(contains(list, "tw") || contains("on", "one") ||
               contains(static_cast<const char* const*>(nullptr), ""));
  for (const bool exact : {false, true}) {
    EXPECT_NE(stringInList({"a", "B"}, "b", exact), exact);
    EXPECT_NE(stringMatchPatternList({"x", "A*[0-9]"}, "abc7", exact), exact);
  }
}

TEST(StrUtil, StartsAndEnds) {
  using Test = bool (*)(const std::string&, const std::string&, bool, bool);
  const std::tuple<Test, const char*, const char*, bool, bool, bool> rows[] = {
      {startsWith, "ab", "abc", false, true, false}, {startsWith, "Abc", "aB", false, false, true},
      {startsWith, "Abc", "aB", false, true, false}, {startsWith, " abc", "ab", false, true, false},
      {startsWith, " abc", "ab", true, true, true},  {endsWith, "abc", "abc", false, false, false},
      {endsWith, "abc", "", false, false, true},     {endsWith, "abC", "Bc", false, true, true},
      {endsWith, "abC", "Bc", false, false, false},  {endsWith, "abc ", "bc", true, false, true},
      {endsWith, "abc ", "bc", false, false, false}, {EndsWith, "", "", false, false, false},
  };
  for (const auto& [test, text, part, trim, last, result] : rows)
    EXPECT_EQ(test(text, part, trim, last), result) << text << " " << part;
}

TEST(StrUtil, ListsToText) {
  EXPECT_EQ(concat({"", "", "a", "", "b"}, "-"), "a--b");
  EXPECT_EQ(PrettyPrint(Strings{"a", "b"}, 2), "a, b");
  EXPECT_EQ(PrettyPrint(StringList{"a", "b", "c"}, 2), "a, b,...<truncated>");
  EXPECT_EQ(PrettyPrint(std::vector<int>{1, -2, 3}, 0), ",...<truncated>");
  EXPECT_EQ(VS("%s", std::string(600, 'x').c_str()), std::string(511, 'x'));
  EXPECT_EQ(StripSuffix("a.b.a.b", ".b"), "a");
  EXPECT_EQ(AddSuffix("a", "@", "b") + AddSuffix("c@d", "@", "b"), "a@bc@d");
}

TEST(StrUtil, PrintableFormsAndHexDigits) {
  EXPECT_EQ(printable("a b") + printable("\x01\xab"), "a b01ab");
  EXPECT_EQ(EscapeSpecialChars("  a $\\\n\t\f\r\x01\xc3 b "), "\\ \\ a \\$\\\\\\n\\t\\f\\r\\0x1\\0xc3 b\\ ");
  EXPECT_EQ(HexToUint8('a') + HexToUint8('F') + HexToUint8('9') + HexToUint8('g'), 10 + 15 + 9 + 0);
  EXPECT_EQ(HexToHexEscaped("AB12"), "\\AB\\12");
  const unsigned char bytes[9] = {1, 2, 0, 0, 0, 0, 0, 0x80, 0xff};
  const std::pair<int, uint64_t> numbers[] = {{-1, 0}, {2, 0x201}, {9, 0x8000000000000201}};
  for (const auto& [size, number] : numbers) EXPECT_EQ(Uint8ArrayToUint64(bytes, size), number) << size;
  EXPECT_EQ(Uint8ArrayToHex(bytes, 3) + " " + Uint8ArrayToHex(bytes + 7, 2, false), "000201 80FF");
  const std::tuple<const char*, bool, std::string> rows[] = {
      {"102fe", true, std::string("\xfe\x02\x01\0", 4)},
      {"0a0102fe0b", true, "\x0b\xfe\x02\x01"},
      {"0102fe0b0c", false, "\x01\x02\xfe\x0b"},
      {"010", false, std::string("\x01\0\0\0", 4)},
  };
  for (const auto& [digits, fromEnd, filled] : rows) {
    std::string out(4, '?');
    HexToUint8Array(digits, reinterpret_cast<unsigned char*>(out.data()), 4, fromEnd);
    EXPECT_EQ(tohex(out), tohex(filled)) << digits;
  }
}

TEST(StrUtil, SplittersDifferInEmptyFields) {
  const std::tuple<const char*, StringList, StringList, StringList, StringList> rows[] = {
      {" a  b ", {"a", "b"}, {"a", "b"}, {"", "a", "", "b", ""}, {"", "a", "", "b", ""}},
      {"a\\ b c", {"a\\", "b", "c"}, {"a\\ b", "c"}, {"a\\ b", "c"}, {"a\\", "b", "c"}},
      {"", {}, {}, {}, {""}},
  };
  for (const auto& [text, dropped, escaped, escapedKept, all] : rows) {
    StringList list;
    split(text, " ,", list);
    EXPECT_EQ(list, dropped) << text;
    Strings strings;
    CrackString(" ,", text, strings);
    EXPECT_EQ(StringList(strings.begin(), strings.end()), dropped) << text;
    for (const bool keep : {false, true}) {
      list.clear();
      splitWithEscape(text, " ,", list, keep);
      EXPECT_EQ(list, keep ? escapedKept : escaped) << text;
    }
    strings.clear();
    StringSplit(" ,", text, strings);
    EXPECT_EQ(StringList(strings.begin(), strings.end()), all) << text;
  }
}

TEST(StrUtil, EthersAddress) {
  EXPECT_TRUE(isValidEthersAddr("0:01:000:a:B:FF"));
  for (const char* bad : {"", "1:2:3:4:5", "1:2:3:4:5:6:7", "1:2:3:4:5:100", "1:2:3:4:5:0x1", "1:2:3:4:5: 1",
                          "1:2:3:4:5:-1", "g:2:3:4:5:"})
    EXPECT_FALSE(isValidEthersAddr(bad)) << bad;
  EXPECT_THROW(isValidEthersAddr("1:2::4:5:6"), std::out_of_range);
}

TEST(StrUtil, SafeCharacters) {
  int (*const questions[])(int) = {IsAlphaChar, IsAlnumChar, IsCntrlChar, IsDigitChar,
                                   IsGraphChar, IsLowerChar, IsPrintChar, IsPunctChar,
                                   IsSpaceChar, IsUpperChar, IsXdigitChar};
  std::string answers;
  for (const char c : {'a', 'Z', '7', '\t', ' ', '.'})
    for (const auto question : questions) answers += question(c) ? '1' : '0';
  EXPECT_EQ(answers,
            "11001110001"
            "11001010010"
            "01011010001"
            "00100000100"
            "00000010100"
            "00001011000");
  for (int c : {300, -2, -1, 256, INT_MAX, INT_MIN})
    for (const auto question : questions) EXPECT_EQ(question(c), 0) << c;
  EXPECT_TRUE(IsDigitStr("0123"));
  EXPECT_FALSE(IsDigitStr("") || IsDigitStr(nullptr) || IsDigitStr("12a") || IsDigitStr("\xb2"));
  EXPECT_EQ(SafeToUpper('a'), 'A');
  for (int c : {-128, -1, 1000, INT_MIN}) EXPECT_EQ(SafeToUpper(c), c);
}

TEST(StrUtil, SafeStrings) {
  EXPECT_EQ(SafeStrnChr("abc", 3, 'c'), -1);
  EXPECT_EQ(SafeStrnChr("abc", 99, '\0'), 3);
  EXPECT_EQ(SafeStrnChr("a\0b", 4, 'b'), -1);
  EXPECT_EQ(SafeStrnChr("abc", 0, 'a') + SafeStrnChr(nullptr, 9, 'a'), -2);

  char buffer[5] = "????";
  EXPECT_EQ(SafeStrnCpy(buffer, "abcdef", 4), buffer);
  EXPECT_STREQ(buffer, "abc");
  EXPECT_STREQ(SafeStrnCpy(buffer, "x", 0), "");
  EXPECT_STREQ(SafeStrnCpy(buffer, nullptr, 5), "");
  EXPECT_EQ(SafeStrnCpy(nullptr, "x", 5), nullptr);
  std::unique_ptr<char, decltype(&free)> copy(SafeStrDup(nullptr), &free);
  EXPECT_STREQ(copy.get(), "");
  EXPECT_EQ(SafeStrnCmp(nullptr, nullptr, 1), 0);
  EXPECT_EQ(SafeStrnCmp(nullptr, "a", 1), -1);
  EXPECT_EQ(SafeStrnCmp("a", nullptr, 1), 1);
}

TEST(Base64, OnlyTheCanonicalFormIsDecoded) {
  const std::pair<const char*, const char*> rows[] = {
      {"", ""},      {"QQ==", "A"}, {"QUI=", "AB"},   {"+/+/", "\xfb\xff\xbf"},
      {"QR==", "-"}, {"QUJ=", "-"}, {"QUJD", "ABC"},  {"QQ=", "-"},
      {"Q===", "-"}, {"Q Q=", "-"}, {"QUJDRA==", "-"}};
  for (const auto& [text, decoded] : rows) {
    unsigned char bytes[3];
    const ssize_t size = vesk::decodeBase64(text, bytes, sizeof bytes);
    EXPECT_EQ(size < 0 ? "-" : std::string(bytes, bytes + size), decoded) << text;
  }
}

TEST(ByteOrder, EachWidthAtAnyAddress) {
  unsigned char bytes[6] = {};
  vesk::PutHiLo32(bytes + 1, 0xf1e2d3c4);
  EXPECT_EQ(vesk::GetLoHi32(bytes + 1), 0xc4d3e2f1U);
  vesk::PutHiLo16(bytes + 3, 0xa0b0);
  EXPECT_EQ(tohex(std::string(reinterpret_cast<char*>(bytes), 6)), "00f1e2a0b000");
}

TEST(SysRights, ReadAndMerge) {
  EXPECT_EQ(sam::AuditLevelToString(sam::GetAuditLevelFromSysRights(48)), "AuditRequired");
  EXPECT_EQ(sam::AuditLevelToString(sam::GetAuditLevelFromSysRights(~48U)), "AuditIfPossible");
  EXPECT_EQ(sam::AuditLevelToString(3), "Unknown");
  EXPECT_FALSE(sam::IsAlwaysPermitLogin(~64U));
  EXPECT_EQ(sam::MergeSysRights(16, 16 | 4), 20U);
  EXPECT_EQ(sam::MergeSysRights(32, 1), 33U);
}

}  // namespace
