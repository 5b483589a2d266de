
#include "tests/support/rows.h"
#include "util/text/base64.h"

// As in a locale of ISO 8859-1.
extern "C" int isprint(int c) noexcept {
  return (' ' <= c && c <= '~') || c >= 0xa0;
}

namespace {

using Strings = std::vector<std::string>;
using StringList = std::list<std::string>;

std::string yes(bool answer) {
  return answer ? "yes" : "no";
}

// Each item with a semicolon.
std::string itemsOf(const StringList& list) {
  std::string text;
  for (const std::string& item : list) text += item + ";";
  return text;
}

// The items that a splitting function adds.
template <class List, class Function>
std::string filled(Function function) {
  List list;
  function(list);
  return itemsOf(StringList(list.begin(), list.end()));
}

std::string bytesOf(const std::string& digits, bool fromEnd) {
  std::string out(4, '?');
  HexToUint8Array(digits.c_str(), reinterpret_cast<unsigned char*>(out.data()), 4, fromEnd);
  return tohex(out);
}

std::string decoded(const std::string& text) {
  unsigned char bytes[3];
  const ssize_t size = vesk::decodeBase64(text, bytes, sizeof bytes);
  return size < 0 ? "refused" : tohex(std::string(bytes, bytes + size));
}

// The character classes that a number is in.
std::string classesOf(int c) {
  static const std::map<std::string, int (*)(int)> kClasses = {
      {"alpha ", IsAlphaChar}, {"alnum ", IsAlnumChar}, {"cntrl ", IsCntrlChar},  {"digit ", IsDigitChar},
      {"graph ", IsGraphChar}, {"lower ", IsLowerChar}, {"print ", IsPrintChar},  {"punct ", IsPunctChar},
      {"space ", IsSpaceChar}, {"upper ", IsUpperChar}, {"xdigit ", IsXdigitChar}};
  std::string classes;
  for (const auto& [name, question] : kClasses)
    if (question(c)) classes += name;
  return classes;
}

struct Arguments {
  const std::string &a, &b;
  bool first, second;
};

// clang-format off
#define FUNCTION(name, result) {#name, [](const Arguments& in) -> std::string { return result; }}
const std::map<std::string, std::string (*)(const Arguments&)> kFunctions = {
    FUNCTION(itoa, itoa(std::stoi(in.a), std::stoi(in.b))),
    FUNCTION(ulltoa, ulltoa(std::stoull(in.a), std::stoi(in.b))),
    FUNCTION(atoui, std::to_string(atoui(in.a.c_str()))),
    FUNCTION(upper, upper(in.a)),
    FUNCTION(lower, lower(in.a)),
    FUNCTION(trimWhiteSpace, trimWhiteSpace(in.a)),
    FUNCTION(contains, yes(contains(in.a, in.b))),
    FUNCTION(startsWith, yes(startsWith(in.a, in.b, in.first, in.second))),
    FUNCTION(endsWith, yes(endsWith(in.a, in.b, in.first, in.second))),
    FUNCTION(EndsWith, yes(EndsWith(in.a, in.b, in.first, in.second))),
    FUNCTION(StripSuffix, StripSuffix(in.a, in.b)),
    FUNCTION(AddSuffix, AddSuffix(in.a, "@", in.b)),
    FUNCTION(EscapeSpecialChars, EscapeSpecialChars(in.a)),
    FUNCTION(HexToHexEscaped, HexToHexEscaped(in.a)),
    FUNCTION(printable, printable(in.a)),
    FUNCTION(split, filled<StringList>([&](auto& list) { split(in.a, " ,", list); })),
    FUNCTION(CrackString, filled<Strings>([&](auto& list) { CrackString(" ,", in.a, list); })),
    FUNCTION(splitWithEscape, filled<StringList>([&](auto& list) { splitWithEscape(in.a, " ,", list, in.first); })),
    FUNCTION(StringSplit, filled<Strings>([&](auto& list) { StringSplit(" ,", in.a, list); })),
    FUNCTION(isValidEthersAddr, yes(isValidEthersAddr(in.a))),
    FUNCTION(HexToUint8Array, bytesOf(in.a, in.first)),
    FUNCTION(decodeBase64, decoded(in.a)),
    FUNCTION(classesOf, classesOf(in.a[0])),
    FUNCTION(IsDigitStr, yes(IsDigitStr(in.a.c_str()))),
};
// clang-format on

TEST(StrUtil, TextsAreConvertedAsTheTableSays) {
  for (const auto& [function, a, b, first, second, result] :
       testsupport::rowsOf<6>("util/text/conversions.txt", "conversions")) {
    std::string returned;
    try {
      returned = kFunctions.at(function)({a, b, !first.empty(), !second.empty()});
    } catch (const std::out_of_range&) {
      returned = "out of range";
    }
    EXPECT_EQ(returned, result) << function << " " << a << " " << b;
  }
}

TEST(StrUtil, OtherFormsOfTextsListsAndNumbers) {
  EXPECT_EQ(dbltoa(1e300).size(), 63U);
  setenv("TZ", "UTC", 1);
  tzset();
  const time_t day = 86400, never = LONG_MAX;
  EXPECT_EQ(strtime(&day) + strtime(&never), "Fri Jan  2 00:00:00 1970ctime_r failed");
  EXPECT_EQ(lower(std::u16string(u"AbC")), u"abc");
  EXPECT_EQ(concat({"", "", "a", "", "b"}, "-"), "a--b");
  EXPECT_EQ(PrettyPrint(Strings{"a", "b"}, 2), "a, b");
  EXPECT_EQ(PrettyPrint(StringList{"a", "b", "c"}, 2), "a, b,...<truncated>");
  EXPECT_EQ(PrettyPrint(std::vector<int>{1, -2, 3}, 0), ",...<truncated>");
  EXPECT_EQ(VS("%s", std::string(600, 'x').c_str()), std::string(511, 'x'));
  const char* const list[] = {"One", "Two", nullptr};
  EXPECT_TRUE(contains(list, "two") && !contains(list, "tw"));
  EXPECT_FALSE(contains(static_cast<const char* const*>(nullptr), ""));
  for (const bool exact : {false, true}) {
    EXPECT_NE(stringInList({"a", "B"}, "b", exact), exact);
    EXPECT_NE(stringMatchPatternList({"x", "A*[0-9]"}, "abc7", exact), exact);
  }
  EXPECT_EQ(HexToUint8('a') + HexToUint8('F') + HexToUint8('9') + HexToUint8('g'), 10 + 15 + 9 + 0);
  const unsigned char bytes[9] = {1, 2, 0, 0, 0, 0, 0, 0x80, 0xff};
  const std::pair<int, uint64_t> numbers[] = {{-1, 0}, {2, 0x201}, {9, 0x8000000000000201}};
  for (const auto& [size, number] : numbers) EXPECT_EQ(Uint8ArrayToUint64(bytes, size), number) << size;
  EXPECT_EQ(Uint8ArrayToHex(bytes, 3) + " " + Uint8ArrayToHex(bytes + 7, 2, false), "000201 80FF");
}

TEST(StrUtil, CharacterClassesTakeAnyNumber) {
  for (int c : {300, -2, -1, 256, INT_MAX, INT_MIN}) EXPECT_EQ(classesOf(c), "") << c;
  EXPECT_FALSE(IsDigitStr(nullptr));
  EXPECT_EQ(SafeToUpper('a'), 'A');
  for (int c : {-128, -1, 1000, INT_MIN}) EXPECT_EQ(SafeToUpper(c), c);
}

TEST(StrUtil, SafeFunctionsTakeNullAndAnySize) {
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

TEST(ByteOrder, NumbersAreStoredAtAnyAddress) {
  unsigned char bytes[6] = {};
  vesk::PutHiLo32(bytes + 1, 0xf1e2d3c4);
  EXPECT_EQ(vesk::GetLoHi32(bytes + 1), 0xc4d3e2f1U);
  vesk::PutHiLo16(bytes + 3, 0xa0b0);
  EXPECT_EQ(tohex(std::string(reinterpret_cast<char*>(bytes), 6)), "00f1e2a0b000");
}

TEST(SysRights, RightsAreReadAndMerged) {
  EXPECT_EQ(sam::AuditLevelToString(sam::GetAuditLevelFromSysRights(48)), "AuditRequired");
  EXPECT_EQ(sam::AuditLevelToString(sam::GetAuditLevelFromSysRights(~48U)), "AuditIfPossible");
  EXPECT_EQ(sam::AuditLevelToString(3), "Unknown");
  EXPECT_FALSE(sam::IsAlwaysPermitLogin(~64U));
  EXPECT_EQ(sam::MergeSysRights(16, 16 | 4), 20U);
  EXPECT_EQ(sam::MergeSysRights(32, 1), 33U);
}

}  // namespace
