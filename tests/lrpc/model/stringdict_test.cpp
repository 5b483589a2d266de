
#include "tests/support/thrown.h"

using namespace vesk;
using testsupport::thrownBy;

namespace {

// FNV-1a.
uint64_t digestOf(const std::string& text) {
  uint64_t digest = 0xcbf29ce484222325;
  for (char c : text) digest = (digest ^ static_cast<unsigned char>(c)) * 0x100000001b3;
  return digest;
}

#define LIST(suffix) \
  0x##suffix, GetDictionaryVector##suffix, GetDictionaryMap##suffix, GetDictionarySum##suffix

TEST(StringDict, EachDictionaryIsThatOfItsRelease) {
  // The digest is that of all entries, a newline after each.
  const std::tuple<int, const DictionaryVector& (*)(), const DictionaryMap& (*)(), int (*)(), uint64_t>
      rows[] = {
          {LIST(15487), 0x9ad08e8f6d69a2e4}, {LIST(15667), 0xaa1d5c9b781f1d42},
          {LIST(12258), 0x39ca3028e88e7370}, {LIST(27271), 0x39ca3028e88e7370},
          {LIST(30618), 0x3091f45b07eed954}, {LIST(60690), 0x2302bb873d0c5d8e},
          {LIST(45829), 0x1416f37f5a50e0e9}, {LIST(36361), 0xbcc204a0fcdbb222},
          {LIST(16090), 0xd4b369e5b6ed2e66},
      };
  for (const auto& [checksum, vector, map, sum, digest] : rows) {
    SCOPED_TRACE(testing::Message() << std::hex << checksum);
    const DictionaryVector& entries = GetDictionaryVector(checksum);
    std::string text;
    for (const std::string& entry : entries) text += entry + '\n';
    EXPECT_EQ(digestOf(text), digest);
    for (size_t i = 0; i < entries.size(); ++i) EXPECT_EQ(map().at(entries[i]), static_cast<int>(i));
    EXPECT_EQ(map().size(), entries.size());
    EXPECT_EQ(&entries, &vector());
    EXPECT_EQ(&GetDictionaryMap(checksum), &map());
    EXPECT_EQ(sum(), checksum);
  }
}

TEST(StringDict, TheCurrentDictionaryIsTheNewest) {
  EXPECT_EQ(GetDictionarySum(), 0x16090);
  EXPECT_NE(&GetDictionaryVector(), &GetDictionaryVector16090());
  EXPECT_EQ(GetDictionaryVector(), GetDictionaryVector16090());
  EXPECT_EQ(GetDictionaryMap(), GetDictionaryMap16090());
  EXPECT_EQ(ADSerializer::m_dictionary[VESK_PSO_MAX_PW_AGE], -1);
  EXPECT_EQ(ADSerializer::m_dictionary[VESK_UID], GetDictionaryMap().at(VESK_UID));
}

TEST(StringDict, ReleasesAreFoundAndPrinted) {
  testing::internal::CaptureStdout();
  ShowDictionarysList();
  EXPECT_EQ(digestOf(testing::internal::GetCapturedStdout()), 0x67c9f6f70023bc52u);
  for (int row = 0; row < kReleaseRows - 1; ++row)
    EXPECT_EQ(GetDictionarySum(version[row]), sum[row]) << version[row];
  EXPECT_STREQ(version[kReleaseRows - 1], "0");
  EXPECT_EQ(thrownBy([] { GetDictionarySum(std::string()); }), "NotFoundException 0 versionNum is empty");
  for (const char* unknown : {"5.1.3", "5.1.3-101", "0"})
    EXPECT_EQ(thrownBy([&] { GetDictionarySum(unknown); }), "NotFoundException 0 CheckSum not found");
  EXPECT_EQ(thrownBy([&] { GetDictionaryVector(0); }), "NotFoundException 0 Old Map not found");
  EXPECT_EQ(thrownBy([&] { GetDictionaryMap(16090); }), "NotFoundException 0 Old Map not found");
}

}  // namespace
