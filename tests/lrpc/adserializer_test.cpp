#include "lrpc/adserializer.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <random>
#include <sstream>

#include "lrpc/adobject.h"
#include "lrpc/stringdict.h"
#include "util/include/error_util.h"

using namespace vesk;

namespace {

size_t g_allocations = 0;

}  // namespace

// Not inlined: the optimizer would take these for the library's own and see memory that changes hands.
[[gnu::noinline]] void* operator new(size_t size) {
  ++g_allocations;
  if (void* memory = malloc(size)) return memory;
  throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, size_t) noexcept {
  free(memory);
}

namespace {

constexpr uint32_t kTop = 0x80000000;

std::string word(uint32_t value) {
  return std::string(reinterpret_cast<const char*>(&value), sizeof value);
}

std::string inlineText(const std::string& text) {
  return word(text.size()) + text;
}

// A record of fields that are encoded already.
std::string record(const std::string& name, const std::vector<std::string>& values) {
  std::string bytes = name + word(values.size());
  for (const std::string& value : values) bytes += value;
  return bytes;
}

std::string blobOf(const std::vector<std::string>& records, uint32_t flags = 0) {
  std::string bytes = word(-5) + "0123456789abcdef" + word(7) + word(1) + word(flags) + word(records.size());
  uint32_t offset = 36 + 4 * records.size();
  for (const std::string& one : records) {
    bytes += word(offset);
    offset += one.size();
  }
  for (const std::string& one : records) bytes += one;
  return bytes;
}

// All the forms a field can have: inline and reference names, no values, empty values, many values.
std::string sampleBlob() {
  return blobOf({record(inlineText("_Ab"), {inlineText(""), word(kTop | 378)}),
                 record(word(kTop | 277), {inlineText("Joe")}), record(inlineText("cnx"), {}),
                 record(word(kTop | 352), {word(kTop | 378), word(kTop | 359), inlineText("Person ")}),
                 record(inlineText("zz"), {inlineText(std::string("\0\xff", 2))})});
}

// The bytes in memory of exactly their own size, so that a sanitizer sees every step outside; from malloc.
char* exact(const std::string& bytes) {
  auto* data = static_cast<char*>(malloc(bytes.empty() ? 1 : bytes.size()));
  memcpy(data, bytes.data(), bytes.size());
  return data;
}

struct Held : ADSerializer {
  explicit Held(const std::string& bytes) : ADSerializer(bytes.size(), exact(bytes), true) {}
};

ADObject objectOver(const std::string& bytes) {
  return ADObject(bytes.size(), exact(bytes), true, nullptr);
}

std::string bytesOf(const ADSerializer& blob) {
  return std::string(blob.data(), blob.size());
}

std::string dumped(const ADSerializer& blob) {
  std::ostringstream out;
  blob.dump(out);
  return out.str();
}

std::vector<std::string> valuesOf(const ADAttribute& attribute) {
  return {attribute.begin(), attribute.end()};
}

// The message of the bulk reader's refusal, empty if it takes the blob.
std::string bulkFailure(const std::string& bytes, ADObject* read = nullptr) {
  ADObject object = objectOver(bytes);
  if (read) *read = object;
  try {
    object.deSerialize(true);
  } catch (const BadDataException& failure) {
    return failure.what();
  }
  return std::string();
}

// Calls every reader. What they answer does not matter; that they come back and stay inside does.
void readEverything(const std::string& bytes) {
  Held blob(bytes);
  unsigned int length;
  for (unsigned int offset = 0; offset < bytes.size() + 8; ++offset) {
    const char* name = blob.getName(offset, length);
    ASSERT_LE(std::string(name ? name : "", length).size(), bytes.size() + 64);
    blob.findAttributeData(reinterpret_cast<const unsigned char*>(blob.data()) + offset);
  }
  blob.getName(UINT32_MAX, length);
  ASSERT_LE(dumped(blob).size(), 64 * bytes.size() + 1000);
  for (const char* name : {"_Ab", "cn", "cnx", "objectClass", "zz", "", "top"}) {
    ASSERT_LE(blob.find(name).size(), bytes.size());
    Held eraser(bytes);
    eraser.erase(name);
    dumped(eraser);
    eraser.find("cn");
  }
  bulkFailure(bytes);
}

TEST(Blob, TheWorkedExampleToTheByte) {
  ADObject object(std::string{});
  object.erase("_dn");
  object["objectClass"] = "top";
  object["objectClass"] += std::string("person");
  object["cn"] = "Joe";
  object.setAcquired(-2);
  object.setIndexed(true);
  object.setUsn(Int64("4294967297"));
  const std::string expected(
      "\xfe\xff\xff\xff\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\x01\0\0\0\x01\0\0\0\x01\0\0\0"
      "\x02\0\0\0\x2c\0\0\0\x3b\0\0\0\x15\x01\0\x80\x01\0\0\0\x03\0\0\0\x4a\x6f\x65"
      "\x60\x01\0\x80\x02\0\0\0\x7a\x01\0\x80\x67\x01\0\x80",
      75);
  EXPECT_EQ(ADSerializer::calcSize(object), 67u);
  EXPECT_EQ(bytesOf(*object.getSerialized()), expected);
}

TEST(Blob, HeaderIsReadAndWrittenInPlace) {
  Held blob(blobOf({}, 0xfffffffe));
  EXPECT_EQ(blob.getAcquired(), -5);
  EXPECT_EQ(blob.guid().toString(), "30313233343536373839616263646566");
  EXPECT_EQ(std::string(blob.getUsn()), "4294967303");
  EXPECT_FALSE(blob.getIndexed());
  blob.setIndexed(true);
  blob.setAcquired(9);
  EXPECT_EQ(bytesOf(blob), word(9) + blobOf({}, 0xffffffff).substr(4));
}

TEST(Blob, OneAttributeAtATime) {
  Held blob(sampleBlob());
  const struct {
    const char* name;
    bool exists;
    std::vector<std::string> values;
  } rows[] = {{"_Ab", true, {"", "top"}},
              {"cn", true, {"Joe"}},
              {"cnx", true, {}},
              {"objectClass", true, {"top", "person", "Person "}},
              {"zz", true, {std::string("\0\xff", 2)}},
              {"_A", false, {}},
              {"cnxx", false, {}},
              {"CN", false, {}},
              {"zzz", false, {}},
              {"", false, {}}};
  for (int fast : {1, 0}) {
    GOFAST1 = fast;
    for (const auto& row : rows) {
      ADAttribute found = blob.find(row.name);
      EXPECT_EQ(valuesOf(found), row.values) << row.name;
      EXPECT_EQ(found.serialized(), !row.values.empty()) << row.name;
      EXPECT_EQ(found.name(), row.name);
      EXPECT_EQ(blob.exists(row.name, false), row.exists) << row.name;
      EXPECT_EQ(blob.exists(row.name, true), !row.values.empty()) << row.name;
    }
  }
  GOFAST1 = 1;
}

TEST(Blob, PointersLeadFromSlotToRecordToCount) {
  Held blob(sampleBlob());
  const auto* first = reinterpret_cast<const unsigned char*>(blob.data());
  EXPECT_EQ(blob.findAttribute("cn"), first + 40);
  const unsigned char* record = blob.findAttributeKey("cn");
  ASSERT_EQ(record, first + 36 + 20 + 19);
  EXPECT_EQ(blob.findAttributeData(record), record + 4);
  const unsigned char* plain = blob.findAttributeKey("cnx");
  EXPECT_EQ(blob.findAttributeData("cnx"), plain + 7);
  EXPECT_EQ(blob.findAttributeData(static_cast<const unsigned char*>(nullptr)), nullptr);
  unsigned int length = 0;
  EXPECT_EQ(std::string(blob.getName(plain - first, length), 3), "cnx");
  EXPECT_EQ(length, 3u);
}

TEST(Blob, NeitherManyValuesNorUnknownOnesMisleadTheSearch) {
  const std::vector<std::string> many(200, word(kTop | 378));
  const Held blob(blobOf({record(inlineText("ab"), many), record(inlineText("abc"), {inlineText("x")}),
                          record(inlineText("abd"), {word(kTop | 398), inlineText("x")})}));
  EXPECT_EQ(blob.find("ab").size(), 200u);
  EXPECT_EQ(valuesOf(blob.find("abc")), std::vector<std::string>{"x"});
  EXPECT_EQ(valuesOf(blob.find("abd")), (std::vector<std::string>{"", "x"}));
}

TEST(Blob, SearchAllocatesNothingAndSerializeOnlyTheBlob) {
  Held blob(sampleBlob());
  size_t before = g_allocations;
  blob.findAttributeData("objectClass");
  blob.findAttributeData("not there, and longer than any short text");
  EXPECT_EQ(g_allocations, before);

  ADObject object = objectOver(sampleBlob());
  object.deSerialize(false);
  before = g_allocations;
  std::unique_ptr<ADSerializer> made = ADSerializer::serialize(object);
  EXPECT_EQ(g_allocations, before + 1);  // the holder; its bytes come from malloc
}

TEST(Blob, EraseLeavesWhatSerializeWouldWrite) {
  const std::vector<std::string> records = {record(inlineText("_Ab"), {inlineText("")}),
                                            record(word(kTop | 277), {inlineText("Joe"), inlineText("x")}),
                                            record(inlineText("zz"), {})};
  const char* const names[] = {"_Ab", "cn", "zz"};
  for (int erased = 0; erased < 3; ++erased) {
    Held blob(blobOf(records));
    EXPECT_EQ(blob.erase("c"), 0u);
    EXPECT_EQ(blob.erase(names[erased]), 1u);
    std::vector<std::string> rest = records;
    rest.erase(rest.begin() + erased);
    EXPECT_EQ(bytesOf(blob), blobOf(rest));
    for (const char* name : names) blob.erase(name);
    EXPECT_EQ(bytesOf(blob), blobOf({}));
  }
}

TEST(Blob, BulkReaderNamesWhatIsWrong) {
  const std::string tail = ". Potential cache corruption or shared library and agent version mismatch.";
  const std::string cn = word(kTop | 277);
  const struct {
    std::string record;
    std::string failure;
  } rows[] = {
      {word(kTop | 398) + word(0), "Bad index value 398 in serialized object, size:398" + tail},
      {record(cn, {word(0xffffffff)}), "Bad index value 2147483647 in serialized object, size:398" + tail},
      {word(5) + "name", "Bad length value 5 in serialized object, size:48" + tail},
      {record(cn, {word(0x7fffffff)}), "Bad length value 2147483647 in serialized object, size:52" + tail},
      {cn + word(0x7fffffff), "Bad length value 4 in serialized object, size:48" + tail},
      {cn, "Bad length value 4 in serialized object, size:44" + tail},
      {cn + word(0x80000000), ""},
  };
  const std::string whole = record(inlineText("ab"), {inlineText("Joe")});
  for (const auto& row : rows) {
    EXPECT_EQ(bulkFailure(blobOf({row.record})), row.failure);
    ADObject object;
    bulkFailure(blobOf({whole, row.record}), &object);
    EXPECT_EQ(std::string(object.attributes().at("ab")), "Joe") << "read before the damage, it stays";
  }
}

TEST(Blob, BulkReaderKeepsWhatTheObjectHas) {
  ADObject object = objectOver(sampleBlob());
  object["cn"] = "Jim";
  object.deSerialize(true);
  EXPECT_EQ(valuesOf(object["cn"]), std::vector<std::string>{"Jim"});
  EXPECT_EQ(object.attributes().size(), 5u);
  EXPECT_TRUE(object["cnx"].serialized());
  EXPECT_EQ(object.serializer(), nullptr);
}

TEST(Blob, AnOlderReleaseIsReadWithItsOwnDictionary) {
  const int sum = GetDictionarySum("5.0.3-134");
  StringArray dictionary(&GetDictionaryMap(sum), &GetDictionaryVector(sum));
  ADObject object =
      objectOver(blobOf({record(word(kTop | dictionary[std::string("_pacGroups")]), {word(kTop | 385)})}));
  object.deSerialize(ADSerializer::kHeaderSize, dictionary, true);
  EXPECT_EQ(std::string(object["_pacGroups"]), "whenCreated");
  EXPECT_NE(bytesOf(*object.getSerialized()).find(inlineText("_pacGroups") + word(1) + word(kTop | 397)),
            std::string::npos);
}

TEST(Blob, Dump) {
  std::ostringstream none;
  ADSerializer::dump(nullptr, none);
  EXPECT_EQ(none.str(), "null ADSerializer\n");
  EXPECT_EQ(dumped(ADSerializer()), "No Serialized Data\n");

  const std::string header =
      "Serialized Data\n  ADOHeader:\n    m_acquired: -5\n    m_guid: 30313233343536373839616263646566\n"
      "    m_usn: 4294967303\n    isIndexed: 0\n";
  Held blob(sampleBlob());
  EXPECT_EQ(dumped(blob), header +
                              "  _Ab(s):,top\n  cn(s):Joe\n  cnx:\n  objectClass(s):top,person,Person \n"
                              "  zz(s):00ff\n");
  EXPECT_EQ(dumped(Held(blobOf({record(word(0), {inlineText("abc")})}))),
            header + "truncated serializer at 11 bytes\n");
}

TEST(Blob, CutAnywhereItIsRefusedOrNoReaderLeavesIt) {
  const std::string bytes = sampleBlob();
  for (size_t size = 0; size < bytes.size(); ++size) {
    const std::string cut = bytes.substr(0, size);
    if (size < 36) {
      char* data = exact(cut);
      EXPECT_THROW(ADSerializer(size, data, true), BadDataException);
      EXPECT_THROW(ADObject(size, data, true, nullptr), BadDataException);
      free(data);  // it is still the caller's
      continue;
    }
    readEverything(cut);
    ADObject object;
    const bool betweenRecords = size == 75 || size == 90 || size == 101 || size == 128;
    EXPECT_EQ(bulkFailure(cut, &object).empty(), size <= 56 || betweenRecords) << size;
    EXPECT_LT(object.attributes().size(), 6u);
  }
}

TEST(Blob, DamagedAnywhereNoReaderLeavesIt) {
  const std::string bytes = sampleBlob();
  for (size_t bit = 0; bit < 8 * bytes.size(); ++bit) {
    std::string flipped = bytes;
    flipped[bit / 8] ^= 1 << (bit % 8);
    readEverything(flipped);
  }
  for (size_t offset = 32; offset + 4 <= bytes.size(); ++offset)
    for (uint32_t absurd : {0xffffffffu, 0x7fffffffu, 0x80000000u, 0x40000000u, 0u, 35u, 36u, 132u})
      readEverything(std::string(bytes).replace(offset, 4, word(absurd)));
}

// Every reader gives what the object holds.
TEST(Blob, LazyReadsEqualTheBulkReadOfAnyObject) {
  std::mt19937 random(20260101);
  const auto text = [&] {
    const DictionaryVector& entries = GetDictionaryVector();
    if (random() % 2) return entries[random() % entries.size()];
    std::string any(random() % 40, '\0');
    for (char& c : any) c = static_cast<char>(random());
    return any;
  };
  for (int round = 0; round < 200; ++round) {
    ADObject original("CN=x");
    for (int i = random() % 60; i > 0; --i) {
      ADAttribute& attribute = original["n" + text()];
      for (int v = random() % 5; v > 0; --v) attribute.addVal(text(), false, false);
    }
    const std::string bytes = bytesOf(*original.getSerialized());
    ADObject bulk = objectOver(bytes);
    bulk.deSerialize(false);
    ASSERT_EQ(bulk.attributes(), original.attributes());
    const Held lazy(bytes);
    for (const auto& entry : original.attributes()) ASSERT_EQ(lazy.find(entry.first), entry.second);
    ASSERT_EQ(bytesOf(*ADSerializer::serialize(bulk)), bytes);
  }
}

}  // namespace
