#include "lrpc/stringdict.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "util/include/error_util.h"

using namespace vesk;

namespace {

struct ListRow {
  int checksum;
  const DictionaryVector& (*vector)();
  const DictionaryMap& (*map)();
  int (*sum)();
  size_t entries;
  uint64_t digest;  // FNV-1a of all entries, each with a newline behind
  bool hasPacGroups;
};

#define LIST_ROW(suffix, entries, digest, hasPacGroups)                                                   \
  {                                                                                                       \
    0x##suffix, GetDictionaryVector##suffix, GetDictionaryMap##suffix, GetDictionarySum##suffix, entries, \
        digest, hasPacGroups                                                                              \
  }

const ListRow kLists[] = {
    LIST_ROW(15487, 377, 0x9ad08e8f6d69a2e4, true),  LIST_ROW(15667, 383, 0xaa1d5c9b781f1d42, true),
    LIST_ROW(12258, 386, 0x39ca3028e88e7370, true),  LIST_ROW(27271, 386, 0x39ca3028e88e7370, true),
    LIST_ROW(30618, 395, 0x3091f45b07eed954, false), LIST_ROW(60690, 394, 0x2302bb873d0c5d8e, false),
    LIST_ROW(45829, 396, 0x1416f37f5a50e0e9, false), LIST_ROW(36361, 397, 0xbcc204a0fcdbb222, false),
    LIST_ROW(16090, 398, 0xd4b369e5b6ed2e66, false),
};

uint64_t digestOf(const DictionaryVector& entries) {
  uint64_t digest = 0xcbf29ce484222325;
  for (const std::string& entry : entries)
    for (char c : entry + '\n') digest = (digest ^ static_cast<unsigned char>(c)) * 0x100000001b3;
  return digest;
}

template <class Call>
std::string notFound(Call call) {
  try {
    call();
  } catch (const NotFoundException& failure) {
    return failure.what();
  }
  return "no exception";
}

TEST(StringDict, EveryListIsTheOneThatItsReleaseWroteWith) {
  for (const ListRow& row : kLists) {
    SCOPED_TRACE(testing::Message() << std::hex << row.checksum);
    const DictionaryVector& entries = GetDictionaryVector(row.checksum);
    EXPECT_EQ(entries.size(), row.entries);
    EXPECT_EQ(digestOf(entries), row.digest);
    EXPECT_EQ(&entries, &row.vector());
    EXPECT_EQ(&GetDictionaryMap(row.checksum), &row.map());
    EXPECT_EQ(row.sum(), row.checksum);
    EXPECT_EQ(row.map().count("_pacGroups"), row.hasPacGroups ? 1u : 0u);
  }
}

TEST(StringDict, MapAndVectorAreInverse) {
  for (const ListRow& row : kLists) {
    SCOPED_TRACE(testing::Message() << std::hex << row.checksum);
    const DictionaryVector& entries = row.vector();
    EXPECT_EQ(row.map().size(), entries.size());
    for (size_t i = 0; i < entries.size(); ++i) EXPECT_EQ(row.map().at(entries[i]), static_cast<int>(i));
  }
}

TEST(StringDict, IndexesOfTheCurrentList) {
  EXPECT_EQ(GetDictionarySum(), 0x16090);
  EXPECT_NE(&GetDictionaryVector(), &GetDictionaryVector16090());
  EXPECT_EQ(GetDictionaryVector(), GetDictionaryVector16090());
  const struct {
    int index;
    const char* entry;
  } rows[] = {{0, "$VeskGroupVersion2"}, {62, "_Loginchk"},   {63, "_ManagedBy"},
              {157, "_veskldapFilter"},  {277, "cn"},         {352, "objectClass"},
              {359, "person"},           {397, "whenCreated"}};
  for (const auto& row : rows) {
    EXPECT_EQ(GetDictionaryVector()[row.index], row.entry);
    EXPECT_EQ(GetDictionaryMap().at(row.entry), row.index);
  }
  EXPECT_EQ(GetDictionaryMap36361().at("_ManagedBy"), 62);
}

TEST(StringDict, ReleasesTellTheirChecksum) {
  const struct {
    const char* version;
    int checksum;
  } rows[] = {{"5.0.0-686", 0x15487}, {"5.0.1-177", 0x15667}, {"5.0.2-411", 0x12258}, {"5.0.3-134", 0x27271},
              {"5.0.5-151", 0x27271}, {"5.1.0-318", 0x30618}, {"5.1.0-401", 0x60690}, {"5.1.0-446", 0x45829},
              {"5.1.2-378", 0x36361}, {"5.1.3-100", 0x16090}};
  for (const auto& row : rows) EXPECT_EQ(GetDictionarySum(row.version), row.checksum) << row.version;
  EXPECT_STREQ(version[kReleaseRows - 1], "0");
}

TEST(StringDict, UnknownReleasesAndChecksums) {
  EXPECT_EQ(notFound([] { GetDictionarySum(std::string()); }), "versionNum is empty");
  for (const char* version : {"5.1.3", "5.1.3-101", "0", "5.1.3-100 "})
    EXPECT_EQ(notFound([&] { GetDictionarySum(version); }), "CheckSum not found") << version;
  for (int checksum : {0, 16090, -1}) {
    EXPECT_EQ(notFound([&] { GetDictionaryVector(checksum); }), "Old Map not found") << checksum;
    EXPECT_EQ(notFound([&] { GetDictionaryMap(checksum); }), "Old Map not found") << checksum;
  }
}

TEST(StringDict, PrintsAllReleases) {
  testing::internal::CaptureStdout();
  ShowDictionarysList();
  const std::string text = testing::internal::GetCapturedStdout();
  const std::string rule(30, '-');
  EXPECT_EQ(text.find("Version Number\t: Checksum\n" + rule + "\n5.0.0-686\t: 0x15487\n"), 0u);
  const std::string end = "5.1.3-100\t: 0x16090\n" + rule + "\nTotal: 35\n";
  EXPECT_EQ(text.find(end), text.size() - end.size());
}

}  // namespace
