#include "base/oid.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <sstream>
#include <string>

#include "base/int64.h"
#include "base/stringarray.h"
#include "util/include/error_util.h"

namespace {

using namespace vesk;

constexpr unsigned char kBytes[65] = {1, 2, 3};
constexpr unsigned char kZeros[3] = {};

TEST(Oid, HoldsAtMostItsStorage) {
  EXPECT_TRUE(Oid(kZeros, 3).isNull());
  Oid oid(kBytes, 64);
  EXPECT_EQ(oid.size(), 64U);
  EXPECT_THROW(Oid(kBytes, 65), BadDataException);
  OidList list;
  EXPECT_THROW(list.add(kBytes, 65), BadDataException);
  EXPECT_TRUE(list.empty());
}

TEST(Oid, CopiesAndClears) {
  Oid oid(kBytes, 3);
  OidList list;
  list.add(oid);
  list.add(kBytes, 2);
  oid = *std::next(list.begin());
  EXPECT_EQ(oid.size(), 2U);
  EXPECT_EQ(oid.value()[2], 0);  // what was there before the assignment is gone
  EXPECT_EQ(*list.begin(), Oid(kBytes, 3));
  EXPECT_NE(*list.begin(), oid);
  oid.setNull();
  EXPECT_EQ(oid, NULL_OID);

  alignas(Oid) unsigned char storage[sizeof(Oid)];
  Oid* secret = new (storage) Oid(kBytes, 3);
  const unsigned char* value = secret->value();
  secret->~Oid();
  EXPECT_TRUE(std::all_of(value, value + Oid::kMaxSize, [](unsigned char byte) { return byte == 0; }));
}

TEST(StringArray, BothWaysAndOutside) {
  const StringArray::Vector entries = {"a", "b", "c"};
  StringArray::Map map;
  for (int i = 0; i < 3; ++i) map[entries[static_cast<size_t>(i)]] = i;
  const StringArray array(&map, &entries);
  EXPECT_EQ(array.count(), 3);
  EXPECT_EQ(array[2], "c");
  EXPECT_EQ(array["b"], 1);
  EXPECT_EQ(array[""], -1);
  EXPECT_EQ(&array[-1], &array[3]);
  EXPECT_EQ(array[3], "");
}

TEST(MurmurHash2, KnownValues) {
  struct Row {
    std::string key;
    unsigned int hash;
  };
  const Row rows[] = {
      {"", 0x5c8efdb6},     {"a", 0x4b41757c},         {"abc", 0xfbb7b030},
      {"abcd", 0xe11cb673}, {"abcde\xff", 0x3a243ebf}, {"objectSid, the name", 0x10655b42},
  };
  for (const Row& row : rows) EXPECT_EQ(murhash()(row.key), row.hash) << row.key;
}

TEST(Int64, TextBothWays) {
  struct Row {
    const char* text;
    int64_t value;
    const char* printed;
  };
  const Row rows[] = {
      {"", 0, "0"},
      {"-17", -17, "-17"},
      {"9223372036854775807", INT64_MAX, "9223372036854775807"},
      {"-9223372036854775808", INT64_MIN, "-9223372036854775808"},
      {"18446744073709551617", 1, "1"},
      {"1:", 20, "20"},  // ":" counts as ten
  };
  for (const Row& row : rows) {
    const Int64 number{std::string(row.text)};
    EXPECT_EQ(number.value(), row.value) << row.text;
    std::ostringstream out;
    out << number;
    EXPECT_EQ(out.str(), row.printed);
  }
  EXPECT_EQ(Int64::MAXINT64, Int64(INT64_MAX));
  EXPECT_EQ(Int64::ZERO, Int64());
}

}  // namespace
