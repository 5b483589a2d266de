#include "base/guid.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/thrown.h"
#include "util/include/strutil.h"

namespace {

using namespace vesk;

constexpr unsigned char kBytes[] = {0x33, 0x22, 0x11, 0x00, 0x55, 0x44, 0x77, 0x66,
                                    0x88, 0x99, 0xaa, 0xbb, 0xcc, 0xdd, 0xee, 0xff};
constexpr char kText[] = "33221100554477668899aabbccddeeff";
constexpr char kMsText[] = "33221100-5544-7766-8899-aabbccddeeff";
constexpr char kRealText[] = "00112233-4455-6677-8899-aabbccddeeff";
constexpr char kDn[] = "<GUID=33221100554477668899aabbccddeeff>";

TEST(Guid, TextFormsDifferInOrder) {
  const Guid guid(kBytes, sizeof kBytes);
  EXPECT_EQ(guid.toString(), kText);
  EXPECT_EQ(guid.toMSString(), kMsText);
  EXPECT_EQ(guid.toRealMSString(), kRealText);
  EXPECT_EQ(guid.toEscapedString(), "\\33\\22\\11\\00\\55\\44\\77\\66\\88\\99\\aa\\bb\\cc\\dd\\ee\\ff");
  EXPECT_EQ(guid.toDN(), kDn);
}

TEST(Guid, ReadersTakeTheirForm) {
  struct Row {
    void (Guid::*read)(const std::string&);
    std::string text;
    const char* printed;
  };
  const Row rows[] = {
      {&Guid::fromString, kText, kText},
      {&Guid::fromString, kMsText, kText},
      {&Guid::fromString, "33221100554477668899AABBCCDDEEFF00", kText},
      {&Guid::fromString, "33-22-1x", "33221000000000000000000000000000"},
      {&Guid::fromRealMSString, kRealText, kText},
      {&Guid::fromHexValue, std::string(reinterpret_cast<const char*>(kBytes), 16) + "more", kText},
      {&Guid::fromHexValue, "\x33\x22", "33220000000000000000000000000000"},
      {&Guid::fromExtendedDN, std::string(kDn) + ";CN=a", kText},
  };
  for (const Row& row : rows) {
    Guid guid(reinterpret_cast<const unsigned char*>("0123456789abcdef"), 16);
    (guid.*row.read)(row.text);
    EXPECT_EQ(guid.toString(), row.printed) << row.text;
  }
}

TEST(Guid, OtherTextIsNoExtendedDn) {
  const std::string dn(kDn);
  for (const std::string& text :
       {std::string(), std::string("CN=a"), dn.substr(0, 38), "<GUID=0" + dn.substr(6), " " + dn,
        "<GUID=g" + dn.substr(7), "<guid=" + dn.substr(6)}) {
    Guid guid(kBytes, sizeof kBytes);
    EXPECT_EQ(testsupport::thrownBy([&] { guid.fromExtendedDN(text); }),
              "BadDataException 0 " + text + " not extended DN");
    EXPECT_EQ(guid.toString(), kText);
  }
}

TEST(Guid, ValidFormat) {
  EXPECT_TRUE(Guid::isValidGuidStringFormat(kRealText));
  EXPECT_TRUE(Guid::isValidGuidStringFormat("00112233-4455-6677-8899-AABBCCDDEEFF"));
  for (const char* text : {"", kText, "00112233-4455-6677-8899-aabbccddeefg",
                           "00112233-4455-6677-8899-aabbccddeeff0", "001122334-455-6677-8899-aabbccddeeff"})
    EXPECT_FALSE(Guid::isValidGuidStringFormat(text)) << text;
  EXPECT_FALSE(Guid::isValidGuidStringFormat(nullptr));
}

TEST(Guid, AgreesWithTheDirectory) {
  std::ifstream table(TEST_SOURCE_DIR "/standin/sample/sids.tsv");
  std::string line;
  ASSERT_TRUE(std::getline(table, line));
  int rows = 0;
  for (; std::getline(table, line); ++rows) {
    std::vector<std::string> fields;
    StringSplit('\t', line, fields);
    ASSERT_GT(fields.size(), 3U) << line;
    ASSERT_TRUE(Guid::isValidGuidStringFormat(fields[3].c_str())) << line;
    Guid guid;
    guid.fromRealMSString(fields[3]);
    EXPECT_EQ(guid.toRealMSString(), fields[3]);
  }
  EXPECT_GT(rows, 0);
}

TEST(GuidList, KeepsTheFirstOfEachAndSharesItsBody) {
  std::vector<unsigned char> bytes(kBytes, kBytes + 16);
  bytes.resize(47, 1);
  GuidList list(bytes.data(), static_cast<int>(bytes.size()));
  ASSERT_EQ(list.size(), 2U);
  GuidList copy = list;
  list.insert(Guid(kBytes, 16));
  list.insert(NULL_GUID);
  ASSERT_EQ(copy.size(), 3U);
  EXPECT_TRUE(copy.begin()[2].isNull());

  std::unique_ptr<unsigned char, decltype(&free)> flat(copy.serialize(), &free);
  bytes.resize(32, 1);
  bytes.resize(48, 0);
  EXPECT_EQ(std::vector<unsigned char>(flat.get(), flat.get() + 48), bytes);
}

TEST(GuidList, NullAndEmptyLists) {
  GuidList null;
  const GuidList lists[] = {null, GuidList(kBytes, 15), GuidList(nullptr, 32), GuidList(kBytes, -16)};
  for (const GuidList& list : lists) {
    EXPECT_EQ(list.begin(), list.end());
    EXPECT_EQ(list.serialize(), nullptr);
  }
  EXPECT_FALSE(lists[1].isNull());
  null.insert(NULL_GUID);
  EXPECT_EQ(null.size(), 1U);
}

}  // namespace
