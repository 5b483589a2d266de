#include "util/include/sid.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "tests/support/thrown.h"
#include "tests/support/world_test.h"
#include "util/include/strutil.h"

namespace {

using namespace vesk;
using testsupport::thrownBy;

constexpr char kUserText[] = "S-1-5-21-1-2-3-1104";
const std::string kUserBytes("\x01\x05\0\0\0\0\0\x05\x15\0\0\0\x01\0\0\0\x02\0\0\0\x03\0\0\0\x50\x04\0\0",
                             28);

TEST(Sid, EachSpellingReadsAndPrints) {
  const std::string escaped =
      "\\01\\05\\00\\00\\00\\00\\00\\05\\15\\00\\00\\00\\01\\00\\00\\00\\02\\00\\00\\00\\03\\00\\00\\00"
      "\\50\\04\\00\\00";
  const std::string dn = "<SID=01050000000000051500000001000000020000000300000050040000>";
  const std::string spellings[] = {
      kUserText,  "AQUAAAAAAAUVAAAAAQAAAAIAAAADAAAAUAQAAA==", escaped, dn, "<GUID=00>;" + dn + ";CN=a",
      kUserBytes,
  };
  for (const std::string& spelling : spellings) {
    const SID sid(spelling);
    EXPECT_EQ(sid.bytes(), kUserBytes) << spelling;
    EXPECT_EQ(sid.toMSString(), kUserText);
    EXPECT_EQ(sid.toEscapedString(), escaped);
    EXPECT_EQ(sid.toDN(), dn);
  }
}

TEST(Sid, TextFormTakesWhatItTakes) {
  struct Row {
    const char* text;
    const char* printed;  // or the failure
  };
  const Row rows[] = {
      {"S-1-5", "S-1-5-0"},
      {"S-99-5-21-1-2-3", "S-99-5-21-1-2-3"},
      {"S-1-300-1", "S-1-44-1"},
      {"S-1-5-21-4294967796", "S-1-5-21-4294967295"},  // never wraps around to the administrator
      {"", "<NULL>"},
      {"S-1-", "BaseException 1004 Sid too short: (4) S-1-"},
      {"X-1-5-21", "BaseException 1004 Bad SID prefix: X-1-5-21"},
      {"S-2-5-21", "BaseException 1004 Unknown SID revision: S-2-5-21"},
      {"S-1-5-21-1-2-3-4-5", "BaseException 1004 Too many SID sub-authorities: S-1-5-21-1-2-3-4-5"},
  };
  for (const Row& row : rows) {
    SID sid(kUserText);
    std::string result = thrownBy([&] { sid.fromMSString(row.text); });
    EXPECT_EQ(result == "nothing" ? sid.toMSString() : result, row.printed);
    EXPECT_EQ(sid.isNull(), result != "nothing" || !*row.text) << row.text;
  }
}

TEST(Sid, BadTextOfOtherSpellingsFailsAndMakesANullSid) {
  struct Row {
    void (SID::*read)(const std::string&);
    std::string text;
    const char* failure;
  };
  const char kB64Shape[] = "Base 64 SID must start with a 'A' and end with '=='";
  const char kB64Failed[] = "Base 64 conversion failed";
  const Row rows[] = {
      {&SID::fromB64String, "AQUA", kB64Shape},
      {&SID::fromB64String, "AQU*AQ==", kB64Failed},
      {&SID::fromB64String, "AQ==AQ==", kB64Failed},
      {&SID::fromB64String, "AR==", kB64Failed},
      {&SID::fromB64String, "A===", kB64Failed},
      {&SID::fromB64String, std::string(1370, 'A') + "==", kB64Failed},  // 1027 bytes
      {&SID::fromEscapedString, "01", "Escape SID must start with a '\\' "},
      {&SID::fromEscapedString, "\\01\\5", "Escape SID length must be a factor of three: (length=5)"},
      {&SID::fromExtendedDN, "><SID=0105", "SID: Bad extended DN: ><SID=0105"},
  };
  for (const Row& row : rows) {
    SID sid(kUserText);
    EXPECT_EQ(thrownBy([&] { (sid.*row.read)(row.text); }), std::string("BaseException 1004 ") + row.failure);
    EXPECT_TRUE(sid.isNull()) << row.text.substr(0, 40);
  }
  for (const char* text : {"S-1-5-21-1-2-3-4-5", "A name", "\\0", "<SID=", "<GUID=00>;CN=a", "Joe"})
    EXPECT_TRUE(SID(text).isNull()) << text;
}

// Bytes from outside: the count may promise more, and less, than there is. Kept in a heap block of the exact
// size, so that a sanitizer sees any read behind it.
TEST(Sid, MissingBytesAreZero) {
  for (unsigned int count : {0U, 1U, 5U, 15U, 16U, 128U, 255U}) {
    for (size_t available : {size_t{1}, size_t{2}, size_t{8}, size_t{11}, size_t{28}, size_t{1028}}) {
      std::vector<unsigned char> bytes(available, 0x11);
      bytes[0] = 1;
      if (available > 1) bytes[1] = static_cast<unsigned char>(count);
      SID sid;
      sid.init(bytes.data(), bytes.size());
      const size_t size = 8 + 4 * (available > 1 ? count : 0);
      std::string expected(bytes.begin(), bytes.begin() + static_cast<long>(std::min(size, available)));
      expected.resize(size);
      EXPECT_EQ(sid.bytes(), expected) << count << " " << available;
      EXPECT_EQ(SID(std::string(bytes.begin(), bytes.end())).bytes(), expected);
      EXPECT_EQ(SID(HexToHexEscaped(tohex(std::string(bytes.begin(), bytes.end())))).bytes(), expected);
    }
  }
  SID sid(kUserText);
  sid.init(nullptr);
  EXPECT_TRUE(sid.isNull());
  sid.init(reinterpret_cast<const unsigned char*>(kUserBytes.data()));
  EXPECT_EQ(sid.toMSString(), kUserText);
  EXPECT_EQ(SID("\\ " + std::string(100000, ' ')).bytes(), std::string(8, '\0'));
}

TEST(Sid, ExtendedDnTakesBytesAsTheyStand) {
  struct Row {
    const char* text;
    const char* printed;
    unsigned int second;
    const char* domain;
  };
  const Row rows[] = {
      {"<SID=0102zz000000000515000000FF>", "S-1-5-21-255", 255, "<NULL>"},
      {"<SID=01050000000000051500000>", "S-1-5-21-0-0-0-0", 0, "S-1-5-21-0-0-0"},
      {"<SID=>", "<NULL>", 0, ""},
  };
  for (const Row& row : rows) {
    SID sid(row.text);
    EXPECT_EQ(sid.toMSString(), row.printed);
    if (sid.isNull()) continue;
    EXPECT_EQ(sid.getSubAuthority(1), row.second);
    EXPECT_EQ(sid.domainSID().toMSString(), row.domain);
    sid.setSubAuthority(4, 7);
    EXPECT_EQ(sid.getObjectRid(), 7U) << row.text;
    EXPECT_EQ(sid.bytes().size(), 28U);
  }
}

TEST(Sid, SubAuthorities) {
  SID sid(kUserText);
  EXPECT_EQ(sid.getObjectRid(), 1104U);
  EXPECT_EQ(sid.getSubAuthority(5), 0U);
  sid.setSubAuthority(1, 0xfffefdfc);
  EXPECT_EQ(sid.toMSString(), "S-1-5-21-4294901244-2-3-1104");
  EXPECT_EQ(thrownBy([&] { sid.setSubAuthority(5, 1); }),
            "BaseException 1004 setSubAuthority index must be less than 5");

  SID domain("S-1-5-21-1-2-3");
  EXPECT_EQ(domain.getObjectRid(), 0U);
  domain.setObjectRid(1104);
  EXPECT_EQ(domain, SID(kUserText));
  EXPECT_EQ(domain.domainSID().toMSString(), "S-1-5-21-1-2-3");
  SID one("S-1-5-32");
  one.setSubAuthority(3, 9);
  EXPECT_EQ(one.toMSString(), "S-1-5-32-0-0-9");
}

TEST(Sid, NullSidFailsWhereBytesAreNeeded) {
  SID null;
  EXPECT_EQ(null, NULL_SID);
  EXPECT_EQ(null.toMSString(), "<NULL>");
  EXPECT_FALSE(null.isDomainSID() || null.isBuiltinGroupSID());
  void (*const calls[])(SID&) = {
      [](SID& sid) { sid.toEscapedString(); }, [](SID& sid) { sid.toDN(); },
      [](SID& sid) { sid.domainSID(); },       [](SID& sid) { sid.setObjectRid(1); },
      [](SID& sid) { sid.getObjectRid(); },    [](SID& sid) { sid.checkedBytes(); },
  };
  for (auto call : calls) EXPECT_EQ(thrownBy([&] { call(null); }), "BadDataException 0 SID is Null");
}

TEST(Sid, KindsOfSid) {
  struct Row {
    const char* text;
    bool domain;
    bool builtin;
  };
  const Row rows[] = {
      {"S-1-5-21-1-2-3", true, false}, {"S-1-5-32-544", false, true},
      {"S-1-5-50-1", false, true},  // a plain prefix of the text
      {"S-1-5-80-0", false, true},     {"S-1-5-80-1", false, false},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(SID(row.text).isDomainSID(), row.domain) << row.text;
    EXPECT_EQ(SID(row.text).isBuiltinGroupSID(), row.builtin) << row.text;
  }
}

// The table of a real directory: each SID as its own tools print it, beside its bytes in base 64.
TEST(Sid, AgreesWithTheDirectory) {
  std::ifstream table(TEST_SOURCE_DIR "/standin/sample/sids.tsv");
  std::string line;
  ASSERT_TRUE(std::getline(table, line));
  int fromBase64 = 0;
  int refused = 0;
  while (std::getline(table, line)) {
    std::vector<std::string> fields;
    StringSplit('\t', line, fields);
    ASSERT_GT(fields.size(), 2U) << line;
    if (fields[1].empty()) continue;
    const SID sid(fields[1]);
    EXPECT_EQ(sid.toMSString(), fields[1]);
    EXPECT_EQ(SID(sid.toEscapedString()), sid);
    EXPECT_EQ(SID(sid.toDN()), sid);
    EXPECT_EQ(SID(sid.bytes()), sid);
    // Only the lengths with two padding characters are known as base 64.
    const SID decoded(fields[2]);
    const bool known = sid.bytes().size() % 3 == 1;
    ++(known ? fromBase64 : refused);
    EXPECT_EQ(decoded, known ? sid : NULL_SID) << fields[2];
  }
  EXPECT_GT(fromBase64, 0);
  EXPECT_GT(refused, 0);
}

using SidLog = testsupport::WorldTest;

TEST_F(SidLog, TellsOfBadTextUnlessAnObjectMerelyHasNone) {
  SID("Joe");
  SID("<GUID=00>;CN=a");
  SID("S-2-5-21");
  SID("AQ");
  EXPECT_TRUE(isLogged("Bad SID string: Joe"));
  EXPECT_FALSE(isLogged("Bad SID string: <GUID"));
  EXPECT_TRUE(isLogged("SID(): Invalid SID string: S-2-5-21 Unknown SID revision: S-2-5-21"));
  EXPECT_TRUE(isLogged("SID::fromB54String - AQ"));
}

}  // namespace
