
#include "tests/support/rows.h"
#include "tests/support/thrown.h"
#include "tests/support/world_test.h"

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
  for (const std::string& spelling :
       {std::string(kUserText), kUserBytes, escaped, "<GUID=00>;" + dn + ";CN=a",
        std::string("AQUAAAAAAAUVAAAAAQAAAAIAAAADAAAAUAQAAA==")}) {
    const SID sid(spelling);
    EXPECT_EQ(sid.bytes(), kUserBytes) << spelling;
    EXPECT_EQ(sid.toMSString(), kUserText);
    EXPECT_EQ(sid.toEscapedString(), escaped);
    EXPECT_EQ(sid.toDN(), dn);
  }
}

TEST(Sid, AReaderThatFailsLeavesANullSid) {
  const std::map<std::string, void (SID::*)(const std::string&)> readers = {
      {"fromMSString", &SID::fromMSString},
      {"fromB64String", &SID::fromB64String},
      {"fromEscapedString", &SID::fromEscapedString},
      {"fromExtendedDN", &SID::fromExtendedDN}};
  auto rows = testsupport::rowsOf<4>("values/rows.txt", "sid readers");
  rows.push_back({"fromB64String", std::string(1370, 'A') + "==", "fails", "Base 64 conversion failed"});
  for (const auto& row : rows) {
    SID sid(kUserText);
    const bool fails = row[2] == "fails";
    EXPECT_EQ(thrownBy([&] { (sid.*readers.at(row[0]))(row[1]); }),
              fails ? "BaseException 1004 " + row[3] : "nothing");
    EXPECT_EQ(sid.toMSString(), fails ? "<NULL>" : row[3]) << row[1].substr(0, 40);
  }
}

// Bytes from outside: the count may promise more than there is, or less. They lie in a heap block of their
// exact size, so that a sanitizer sees any read past their end.
TEST(Sid, MissingBytesAreZero) {
  for (unsigned int count : {0U, 1U, 5U, 15U, 16U, 255U}) {
    for (size_t available : {size_t{1}, size_t{2}, size_t{8}, size_t{11}, size_t{28}, size_t{1028}}) {
      std::vector<unsigned char> bytes(available, 0x11);
      bytes[0] = 1;
      if (available > 1) bytes[1] = static_cast<unsigned char>(count);
      const std::string text(bytes.begin(), bytes.end());
      std::string expected = text;
      expected.resize(8 + 4 * (available > 1 ? count : 0));
      SID sid;
      sid.init(bytes.data(), bytes.size());
      EXPECT_EQ(sid.bytes(), expected) << count << " " << available;
      EXPECT_EQ(SID(HexToHexEscaped(tohex(text))).bytes(), expected);
    }
  }
  SID sid;
  sid.init(reinterpret_cast<const unsigned char*>(kUserBytes.data()));
  EXPECT_EQ(sid.toMSString(), kUserText);
  sid.init(nullptr);
  EXPECT_TRUE(sid.isNull());
  SID cut("<SID=01050000000000051500000>");
  EXPECT_EQ(cut.domainSID().toMSString(), "S-1-5-21-0-0-0");
  cut.setSubAuthority(4, 7);
  EXPECT_EQ(cut.getObjectRid(), 7U);
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
  for (const size_t odd : {size_t{0}, size_t{7}, size_t{8}}) {  // revision, authority, first sub-authority
    std::string bytes = kUserBytes;
    ++bytes[odd];
    SID other;
    other.init(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
    EXPECT_TRUE(other.domainSID().isNull()) << odd;
  }
  EXPECT_EQ(SID(kUserText).domainSID(), SID("S-1-5-21-1-2-3"));
  EXPECT_TRUE(SID("S-1-5-21-1").domainSID().isNull());
  SID one("S-1-5-32");
  one.setSubAuthority(3, 9);
  EXPECT_EQ(one.toMSString(), "S-1-5-32-0-0-9");
}

TEST(Sid, NullSidFailsWhereBytesAreNeeded) {
  void (*const calls[])(SID&) = {
      [](SID& sid) { sid.toEscapedString(); }, [](SID& sid) { sid.toDN(); },
      [](SID& sid) { sid.domainSID(); },       [](SID& sid) { sid.setObjectRid(1); },
      [](SID& sid) { sid.getObjectRid(); },
  };
  SID null;
  for (auto call : calls) EXPECT_EQ(thrownBy([&] { call(null); }), "BadDataException 0 SID is Null");
}

TEST(Sid, KindsOfSid) {
  EXPECT_TRUE(SID("S-1-5-21-1-2-3").isDomainSID());
  EXPECT_FALSE(SID("S-1-5-32-544").isDomainSID() || NULL_SID.isDomainSID());
  for (const char* builtin :
       {"S-1-5-32-544", "S-1-5-50-1", "S-1-5-80-0"})  // the second because its text begins like the first's
    EXPECT_TRUE(SID(builtin).isBuiltinGroupSID()) << builtin;
  for (const char* other : {"S-1-5-21-1-2-3", "S-1-5-80-1", ""})
    EXPECT_FALSE(SID(other).isBuiltinGroupSID()) << other;
}

// From a real directory: each SID as printed by its tools, and its bytes in base 64.
TEST(Sid, AgreesWithTheDirectory) {
  std::ifstream table(TEST_SOURCE_DIR "/standin/sample/sids.tsv");
  std::string line;
  int counts[] = {0, 0};  // base 64 that is refused, and that is read
  for (std::getline(table, line); std::getline(table, line);) {
    std::vector<std::string> fields;
    StringSplit('\t', line, fields);
    ASSERT_GT(fields.size(), 2U) << line;
    if (fields[1].empty()) continue;
    const SID sid(fields[1]);
    EXPECT_EQ(sid.toMSString(), fields[1]);
    // Base 64 is recognised by two padding characters, which not every length has.
    const bool known = sid.bytes().size() % 3 == 1;
    EXPECT_EQ(SID(fields[2]), known ? sid : NULL_SID) << fields[2];
    ++counts[known];
  }
  EXPECT_TRUE(counts[false] > 0 && counts[true] > 0);
}

using SidLog = testsupport::WorldTest;

TEST_F(SidLog, BadTextIsLoggedButNotAnObjectWithoutSid) {
  for (const char* text : {"Joe", "<GUID=00>;CN=a", "S-2-5-21", "AQ", "\\0", "<SID="})
    EXPECT_TRUE(SID(text).isNull()) << text;
  EXPECT_TRUE(isLogged("Bad SID string: Joe"));
  EXPECT_FALSE(isLogged("Bad SID string: <GUID"));
  EXPECT_TRUE(isLogged("SID(): Invalid SID string: S-2-5-21 Unknown SID revision: S-2-5-21"));
  EXPECT_TRUE(isLogged("SID::fromB54String - AQ"));
}

}  // namespace
