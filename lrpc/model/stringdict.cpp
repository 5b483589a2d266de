#include <fokrazo/stringdict.h>

#include <cstdio>
#include <memory>

#include "lrpc/model/stringdict_table.h"
#include "util/error/throw.h"
#include "util/text/made_once.h"

namespace vesk {
namespace {

constexpr char kSource[] = "lrpc/stringdict";

// Created once and never destroyed: blobs may be read until the process ends.
std::unique_ptr<const DictionaryVector> newVector(stringdict::Lists list) {
  auto entries = std::make_unique<DictionaryVector>();
  entries->reserve(stringdict::entryCount(list));
  for (const stringdict::Entry& entry : stringdict::kEntries)
    if (entry.lists & list) entries->emplace_back(entry.text);
  return entries;
}

std::unique_ptr<const DictionaryMap> newMap(stringdict::Lists list) {
  auto indexes = std::make_unique<DictionaryMap>(stringdict::entryCount(list));
  int index = 0;
  for (const stringdict::Entry& entry : stringdict::kEntries)
    if (entry.lists & list) indexes->emplace(entry.text, index++);
  return indexes;
}

struct NumberedList {
  int checksum;
  const DictionaryVector& (*vector)();
  const DictionaryMap& (*map)();
};

constexpr NumberedList kLists[] = {
    {0x15487, GetDictionaryVector15487, GetDictionaryMap15487},
    {0x15667, GetDictionaryVector15667, GetDictionaryMap15667},
    {0x12258, GetDictionaryVector12258, GetDictionaryMap12258},
    {0x27271, GetDictionaryVector27271, GetDictionaryMap27271},
    {0x30618, GetDictionaryVector30618, GetDictionaryMap30618},
    {0x60690, GetDictionaryVector60690, GetDictionaryMap60690},
    {0x45829, GetDictionaryVector45829, GetDictionaryMap45829},
    {0x36361, GetDictionaryVector36361, GetDictionaryMap36361},
    {0x16090, GetDictionaryVector16090, GetDictionaryMap16090},
};

const NumberedList& listOf(int checksum) {
  for (const NumberedList& list : kLists)
    if (list.checksum == checksum) return list;
  FOKRAZO_THROW(NotFoundException, "vesk::NotFoundException", 0, "Old Map not found");
}

}  // namespace

// The three functions of a list.
#define FOKRAZO_DICTIONARY(suffix, list, checksum)                  \
  const DictionaryVector& GetDictionaryVector##suffix() {           \
    static MadeOnce<const DictionaryVector> entries;                \
    return entries.get([] { return newVector(stringdict::list); }); \
  }                                                                 \
  const DictionaryMap& GetDictionaryMap##suffix() {                 \
    static MadeOnce<const DictionaryMap> indexes;                   \
    return indexes.get([] { return newMap(stringdict::list); });    \
  }                                                                 \
  int GetDictionarySum##suffix() {                                  \
    return checksum;                                                \
  }

FOKRAZO_DICTIONARY(, k16090, 0x16090)
FOKRAZO_DICTIONARY(15487, k15487, 0x15487)
FOKRAZO_DICTIONARY(15667, k15667, 0x15667)
FOKRAZO_DICTIONARY(12258, k12258, 0x12258)
FOKRAZO_DICTIONARY(27271, k27271, 0x27271)
FOKRAZO_DICTIONARY(30618, k30618, 0x30618)
FOKRAZO_DICTIONARY(60690, k60690, 0x60690)
FOKRAZO_DICTIONARY(45829, k45829, 0x45829)
FOKRAZO_DICTIONARY(36361, k36361, 0x36361)
FOKRAZO_DICTIONARY(16090, k16090, 0x16090)

#undef FOKRAZO_DICTIONARY

// Each release and the checksum of its list, oldest first.
#define FOKRAZO_RELEASES(ROW) \
  ROW("5.0.0-686", 0x15487)   \
  ROW("5.0.1-177", 0x15667)   \
  ROW("5.0.2-378", 0x12258)   \
  ROW("5.0.2-388", 0x12258)   \
  ROW("5.0.2-389", 0x12258)   \
  ROW("5.0.2-395", 0x12258)   \
  ROW("5.0.2-396", 0x12258)   \
  ROW("5.0.2-402", 0x12258)   \
  ROW("5.0.2-403", 0x12258)   \
  ROW("5.0.2-405", 0x12258)   \
  ROW("5.0.2-406", 0x12258)   \
  ROW("5.0.2-408", 0x12258)   \
  ROW("5.0.2-409", 0x12258)   \
  ROW("5.0.2-410", 0x12258)   \
  ROW("5.0.2-411", 0x12258)   \
  ROW("5.0.3-134", 0x27271)   \
  ROW("5.0.3-143", 0x27271)   \
  ROW("5.0.3-144", 0x27271)   \
  ROW("5.0.3-146", 0x27271)   \
  ROW("5.0.3-214", 0x27271)   \
  ROW("5.0.3-222", 0x27271)   \
  ROW("5.0.3-225", 0x27271)   \
  ROW("5.0.3-226", 0x27271)   \
  ROW("5.0.3-227", 0x27271)   \
  ROW("5.0.3-228", 0x27271)   \
  ROW("5.0.4-117", 0x27271)   \
  ROW("5.0.4-120", 0x27271)   \
  ROW("5.0.4-130", 0x27271)   \
  ROW("5.0.4-133", 0x27271)   \
  ROW("5.0.5-151", 0x27271)   \
  ROW("5.1.0-318", 0x30618)   \
  ROW("5.1.0-401", 0x60690)   \
  ROW("5.1.0-446", 0x45829)   \
  ROW("5.1.2-378", 0x36361)   \
  ROW("5.1.3-100", 0x16090)   \
  ROW("0", 0)

#define FOKRAZO_VERSION(version, checksum) version,
#define FOKRAZO_CHECKSUM(version, checksum) checksum,

const char* const version[kReleaseRows] = {FOKRAZO_RELEASES(FOKRAZO_VERSION)};
const int sum[kReleaseRows] = {FOKRAZO_RELEASES(FOKRAZO_CHECKSUM)};

#undef FOKRAZO_VERSION
#undef FOKRAZO_CHECKSUM
#undef FOKRAZO_RELEASES

const DictionaryVector& GetDictionaryVector(int checksum) {
  return listOf(checksum).vector();
}

const DictionaryMap& GetDictionaryMap(int checksum) {
  return listOf(checksum).map();
}

int GetDictionarySum(const std::string& versionNum) {
  if (versionNum.empty())
    FOKRAZO_THROW(NotFoundException, "vesk::NotFoundException", 0, "versionNum is empty");
  for (int row = 0; sum[row] != 0; ++row)
    if (versionNum == version[row]) return sum[row];
  FOKRAZO_THROW(NotFoundException, "vesk::NotFoundException", 0, "CheckSum not found");
}

void ShowDictionarysList() {
  constexpr char kRule[] = "------------------------------";
  static_assert(sizeof kRule == 31, "the rule has 30 hyphens");
  printf("Version Number\t: Checksum\n%s\n", kRule);
  int rows = 0;
  for (; sum[rows] != 0; ++rows) printf("%s\t: 0x%05x\n", version[rows], sum[rows]);
  printf("%s\nTotal: %d\n", kRule, rows);
}

}  // namespace vesk
