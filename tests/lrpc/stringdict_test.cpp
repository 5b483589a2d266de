#include "lrpc/stringdict.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "base/guid.h"
#include "lrpc/adserializer.h"
#include "lrpc/attrnames.h"
#include "tests/support/thrown.h"

using namespace vesk;
using testsupport::thrownBy;

namespace {

struct ListRow {
  int checksum;
  const DictionaryVector& (*vector)();
  const DictionaryMap& (*map)();
  int (*sum)();
  uint64_t digest;  // FNV-1a of all entries, each with a newline behind
  bool hasPacGroups;
};

#define LIST(suffix) \
  0x##suffix, GetDictionaryVector##suffix, GetDictionaryMap##suffix, GetDictionarySum##suffix

const ListRow kLists[] = {
    {LIST(15487), 0x9ad08e8f6d69a2e4, true},  {LIST(15667), 0xaa1d5c9b781f1d42, true},
    {LIST(12258), 0x39ca3028e88e7370, true},  {LIST(27271), 0x39ca3028e88e7370, true},
    {LIST(30618), 0x3091f45b07eed954, false}, {LIST(60690), 0x2302bb873d0c5d8e, false},
    {LIST(45829), 0x1416f37f5a50e0e9, false}, {LIST(36361), 0xbcc204a0fcdbb222, false},
    {LIST(16090), 0xd4b369e5b6ed2e66, false},
};

uint64_t digestOf(const std::string& text) {
  uint64_t digest = 0xcbf29ce484222325;
  for (char c : text) digest = (digest ^ static_cast<unsigned char>(c)) * 0x100000001b3;
  return digest;
}

TEST(StringDict, EveryListIsTheOneThatItsReleaseWroteWith) {
  for (const ListRow& row : kLists) {
    SCOPED_TRACE(testing::Message() << std::hex << row.checksum);
    const DictionaryVector& entries = GetDictionaryVector(row.checksum);
    std::string text;
    for (const std::string& entry : entries) text += entry + '\n';
    EXPECT_EQ(digestOf(text), row.digest);
    for (size_t i = 0; i < entries.size(); ++i) EXPECT_EQ(row.map().at(entries[i]), static_cast<int>(i));
    EXPECT_EQ(row.map().size(), entries.size());
    EXPECT_EQ(&entries, &row.vector());
    EXPECT_EQ(&GetDictionaryMap(row.checksum), &row.map());
    EXPECT_EQ(row.sum(), row.checksum);
    EXPECT_EQ(row.map().count("_pacGroups"), row.hasPacGroups ? 1u : 0u);
  }
}

TEST(StringDict, TheCurrentListIsTheNewest) {
  EXPECT_EQ(GetDictionarySum(), 0x16090);
  EXPECT_NE(&GetDictionaryVector(), &GetDictionaryVector16090());
  EXPECT_EQ(GetDictionaryVector(), GetDictionaryVector16090());
  EXPECT_EQ(GetDictionaryMap(), GetDictionaryMap16090());
  for (const std::string* name :
       {&VESK_ALT_MAP_GROUPNAME, &MSRPC_TRUST_FLAGS, &MSRPC_PARENT_INDEX, &VESK_SITE, &VESK_PSO_MAX_PW_AGE,
        &VESK_PSO_MIN_PW_AGE, &VESK_PSO_BADCOUNT, &VESK_PSO_DURATION, &VESK_UNKNOWN_SIDS_TEMP, &AD_MIT_USER})
    EXPECT_EQ(ADSerializer::m_dictionary[*name], -1) << *name;
  for (const std::string* name : {&VESK_UID, &VESK_DICTIONARY_SUM, &AZ_TASK_TASKS})
    EXPECT_EQ(ADSerializer::m_dictionary[*name], GetDictionaryMap().at(*name)) << *name;
}

TEST(StringDict, ReleasesAreFoundAndPrinted) {
  testing::internal::CaptureStdout();
  ShowDictionarysList();
  EXPECT_EQ(digestOf(testing::internal::GetCapturedStdout()), 0x67c9f6f70023bc52u);
  for (int row = 0; row < kReleaseRows - 1; ++row)
    EXPECT_EQ(GetDictionarySum(version[row]), sum[row]) << version[row];
  EXPECT_STREQ(version[kReleaseRows - 1], "0");
  EXPECT_EQ(thrownBy([] { GetDictionarySum(std::string()); }), "NotFoundException 0 versionNum is empty");
  for (const char* unknown : {"5.1.3", "5.1.3-101", "0", "5.1.3-100 "})
    EXPECT_EQ(thrownBy([&] { GetDictionarySum(unknown); }), "NotFoundException 0 CheckSum not found")
        << unknown;
  for (int unknown : {0, 16090, -1}) {
    EXPECT_EQ(thrownBy([&] { GetDictionaryVector(unknown); }), "NotFoundException 0 Old Map not found");
    EXPECT_EQ(thrownBy([&] { GetDictionaryMap(unknown); }), "NotFoundException 0 Old Map not found");
  }
}

// Names that mislead: a reader might want to put them right.
TEST(AttributeNames, CopiesAndCacheVersions) {
  EXPECT_EQ(VESK_GROUPNAME + SFU_GROUPNAME + AD_GROUPNAME, "_UnixNamemsSFU30NamesAMAccountName");
  EXPECT_EQ(VESK_EXT_CATEGORY + AD_SID + LOGINCHK_ATTR,
            "Service-Connection-PointsecurityIdentifieraix.login");
  EXPECT_EQ(QTR_CACHE_VERSION.toString(), "ffff0000ffff0000ffff9a70cacbe440");
  EXPECT_EQ(QTR_ENCRYPTED_CACHE_VERSION.toString(), "ffff0000ffff0000ffff9a7ecacbe440");
}

}  // namespace
