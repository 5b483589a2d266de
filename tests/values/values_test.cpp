// The small values: GUIDs, OIDs, hashes and numbers as text.

#include "tests/support/rows.h"
#include "tests/support/thrown.h"

namespace {

using namespace vesk;
using testsupport::rowsOf;

constexpr unsigned char kBytes[] = {0x33, 0x22, 0x11, 0x00, 0x55, 0x44, 0x77, 0x66,
                                    0x88, 0x99, 0xaa, 0xbb, 0xcc, 0xdd, 0xee, 0xff};
constexpr char kText[] = "33221100554477668899aabbccddeeff";
constexpr char kMsText[] = "33221100-5544-7766-8899-aabbccddeeff";
constexpr char kRealText[] = "00112233-4455-6677-8899-aabbccddeeff";
const std::string kDn = "<GUID=33221100554477668899aabbccddeeff>";

TEST(Guid, EachFormIsPrintedAndRead) {
  const Guid guid(kBytes, sizeof kBytes);
  EXPECT_EQ(guid.toMSString(), kMsText);
  EXPECT_EQ(guid.toRealMSString(), kRealText);
  EXPECT_EQ(guid.toEscapedString(), "\\33\\22\\11\\00\\55\\44\\77\\66\\88\\99\\aa\\bb\\cc\\dd\\ee\\ff");
  EXPECT_EQ(guid.toDN(), kDn);
  const std::map<std::string, void (Guid::*)(const std::string&)> readers = {
      {"fromString", &Guid::fromString},
      {"fromRealMSString", &Guid::fromRealMSString},
      {"fromHexValue", &Guid::fromHexValue},
      {"fromExtendedDN", &Guid::fromExtendedDN}};
  for (const auto& [reader, text, printed] : rowsOf<3>("values/rows.txt", "guid readers")) {
    Guid other(reinterpret_cast<const unsigned char*>("0123456789abcdef"), 16);
    (other.*readers.at(reader))(text);
    EXPECT_EQ(other.toString(), printed) << text;
  }
  for (const std::string& text : {std::string(), kDn.substr(0, 38), "<GUID=0" + kDn.substr(6), " " + kDn,
                                  "<GUID=g" + kDn.substr(7), "<guid=" + kDn.substr(6)}) {
    Guid kept = guid;
    EXPECT_EQ(testsupport::thrownBy([&] { kept.fromExtendedDN(text); }),
              "BadDataException 0 " + text + " not extended DN");
    EXPECT_EQ(kept.toString(), kText);
  }
}

TEST(Guid, ValidFormat) {
  for (const auto& [isValid, text] : rowsOf<2>("values/rows.txt", "guid formats"))
    EXPECT_EQ(Guid::isValidGuidStringFormat(text.c_str()), isValid == "valid") << text;
  EXPECT_FALSE(Guid::isValidGuidStringFormat(nullptr));
}

TEST(GuidList, KeepsTheFirstOfEachAndSharesItsBody) {
  std::vector<unsigned char> bytes(kBytes, kBytes + 16);
  bytes.resize(47, 1);
  GuidList list(bytes.data(), static_cast<int>(bytes.size()));
  GuidList copy = list;
  list.insert(Guid(kBytes, 16));
  list.insert(NULL_GUID);
  ASSERT_EQ(copy.size(), 3U);
  std::unique_ptr<unsigned char, decltype(&free)> flat(copy.serialize(), &free);
  bytes.resize(32);
  bytes.resize(48, 0);
  EXPECT_EQ(std::vector<unsigned char>(flat.get(), flat.get() + 48), bytes);
  for (const GuidList& empty :
       {GuidList(), GuidList(kBytes, 15), GuidList(nullptr, 32), GuidList(kBytes, -16)}) {
    EXPECT_EQ(empty.begin(), empty.end());
    EXPECT_EQ(empty.serialize(), nullptr);
  }
  GuidList null;
  null.insert(NULL_GUID);
  EXPECT_EQ(null.size(), 1U);
}

TEST(Oid, HoldsAtMostItsStorageAndClearsIt) {
  constexpr unsigned char kOid[65] = {1, 2, 3};
  EXPECT_TRUE(Oid(kOid + 3, 3).isNull());
  EXPECT_EQ(Oid(kOid, 64).size(), 64U);
  EXPECT_THROW(Oid(kOid, 65), BadDataException);
  OidList list;
  EXPECT_THROW(list.add(kOid, 65), BadDataException);
  EXPECT_TRUE(list.empty());
  Oid oid(kOid, 3);
  list.add(oid);
  list.add(kOid, 2);
  oid = *std::next(list.begin());
  EXPECT_EQ(oid.size(), 2U);
  EXPECT_EQ(oid.value()[2], 0) << "what was there before the assignment is gone";
  EXPECT_TRUE(*list.begin() == Oid(kOid, 3) && *list.begin() != oid);

  alignas(Oid) unsigned char storage[sizeof(Oid)];
  Oid* secret = new (storage) Oid(kOid, 3);
  const unsigned char* value = secret->value();
  secret->~Oid();
  EXPECT_TRUE(std::all_of(value, value + Oid::kMaxSize, [](unsigned char byte) { return byte == 0; }));
}

TEST(MurmurHash2, KnownValues) {
  EXPECT_EQ(murhash()("abcd"), 0xe11cb673);
  EXPECT_EQ(murhash()("abcde\xff"), 0x3a243ebf);
}

TEST(Int64, TextBothWays) {
  for (const auto& [text, value] : rowsOf<2>("values/rows.txt", "int64")) {
    const Int64 number{text};
    std::ostringstream out;
    out << number;
    EXPECT_EQ(std::to_string(number.value()), value) << text;
    EXPECT_EQ(out.str(), value);
  }
}

}  // namespace
