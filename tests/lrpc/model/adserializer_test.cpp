// Blobs against literal bytes. Damaged ones are read as by the fuzz target, and compared with its reference
// reader.

#include "fuzz/fuzz_input.h"
#include "tests/support/thrown.h"
#include "tests/support/wire.h"

using namespace vesk;
using namespace testsupport;

static size_t g_allocations = 0;

// Not inlined, because the optimizer would take these for the library's functions.
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

std::string inlineText(const std::string& text) {
  return word(text.size()) + text;
}

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

// All forms of fields: inline and reference names, no values, empty values, many values.
std::string sampleBlob() {
  return blobOf({record(inlineText("_Ab"), {inlineText(""), word(kTop | 378)}),
                 record(word(kTop | 277), {inlineText("Joe")}), record(inlineText("cnx"), {}),
                 record(word(kTop | 352), {word(kTop | 378), word(kTop | 359), inlineText("Person ")}),
                 record(inlineText("zz"), {inlineText(std::string("\0\xff", 2))})});
}

// The bytes in a malloc buffer of exactly their size, so that a sanitizer detects any access outside.
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

// Returns what the bulk reader throws; `read` is what it read before.
std::string bulkThrows(const std::string& bytes, ADObject& read) {
  read = objectOver(bytes);
  return thrownBy([&] { read.deSerialize(true); });
}

// Calls every reader. A reader that fails or leaves the blob ends the program.
void readEverything(const std::string& bytes) {
  const std::string input = '\0' + bytes;
  LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(input.data()), input.size());
}

TEST(Blob, HasTheBytesOfTheExample) {
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

TEST(Blob, FindsOneAttributeWithoutReadingTheOthers) {
  const Held blob(sampleBlob());
  EXPECT_EQ(valuesOf(blob.find("objectClass")), (std::vector<std::string>{"top", "person", "Person "}));
  EXPECT_TRUE(blob.find("objectClass").serialized());
  EXPECT_TRUE(blob.find("cnx").empty() && !blob.find("cnx").serialized());
  EXPECT_EQ(blob.find("_A").name(), "_A");
  EXPECT_TRUE(blob.exists("_Ab", true) && blob.exists("cnx", false));
  EXPECT_FALSE(blob.exists("cnx", true) || blob.exists("CN", false));
  const Held unknown(blobOf({record(inlineText("a"), {word(kTop | 398), inlineText("x")})}));
  EXPECT_EQ(valuesOf(unknown.find("a")), (std::vector<std::string>{"", "x"}));
  const auto* first = reinterpret_cast<const unsigned char*>(blob.data());
  EXPECT_EQ(blob.findAttribute("cn"), first + 40);
  EXPECT_EQ(blob.findAttributeKey("cn"), first + 36 + 20 + 19);
  EXPECT_EQ(blob.findAttributeData("cn"), first + 36 + 20 + 19 + 4);
  EXPECT_EQ(blob.findAttributeData(static_cast<const unsigned char*>(nullptr)), nullptr);
}

TEST(Blob, SearchAllocatesNothing) {
  const Held blob(sampleBlob());
  const size_t before = g_allocations;
  blob.findAttributeData("objectClass");
  blob.findAttributeData("not there, and longer than any short text");
  EXPECT_EQ(g_allocations, before);
}

TEST(Blob, ReadingAllNamesWhatIsWrong) {
  const std::string tail = ". Potential cache corruption or shared library and agent version mismatch.";
  const std::string cn = word(kTop | 277);
  const std::pair<std::string, std::string> rows[] = {
      {word(kTop | 398) + word(0), "index value 398 in serialized object, size:398"},
      {record(cn, {word(0xffffffff)}), "index value 2147483647 in serialized object, size:398"},
      {word(5) + "name", "length value 5 in serialized object, size:66"},
      {record(cn, {word(0x7fffffff)}), "length value 2147483647 in serialized object, size:70"},
      {cn + word(0x7fffffff), "length value 4 in serialized object, size:66"},
      {cn, "length value 4 in serialized object, size:62"},
  };
  const std::string whole = record(inlineText("a"), {inlineText("b")});
  ADObject object;
  for (const auto& [damaged, failure] : rows) {
    EXPECT_EQ(bulkThrows(blobOf({whole, damaged}), object), "BadDataException 0 Bad " + failure + tail);
    EXPECT_EQ(std::string(object.attributes().at("a")), "b") << "read before the damage, it stays";
  }
  EXPECT_EQ(bulkThrows(blobOf({cn + word(0x80000000)}), object), "nothing");
}

TEST(Blob, ReadingAllKeepsWhatTheObjectHas) {
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

TEST(Blob, ADumpShowsHeaderAndAttributes) {
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

TEST(Blob, NoReaderStepsOutsideACutBlob) {
  const std::string bytes = sampleBlob();
  for (size_t size = 0; size < bytes.size(); ++size) {
    const std::string cut = bytes.substr(0, size);
    readEverything(cut);
    if (size < 36) continue;
    ADObject object;
    const bool betweenRecords = size == 75 || size == 90 || size == 101 || size == 128;
    EXPECT_EQ(bulkThrows(cut, object) == "nothing", size <= 56 || betweenRecords) << size;
    EXPECT_LT(object.attributes().size(), 6u);
  }
}

TEST(Blob, NoReaderStepsOutsideADamagedBlob) {
  const std::string bytes = sampleBlob();
  readEverything(bytes);
  for (size_t bit = 0; bit < 8 * bytes.size(); ++bit) {
    std::string flipped = bytes;
    flipped[bit / 8] ^= 1 << (bit % 8);
    readEverything(flipped);
  }
  for (size_t offset = 32; offset + 4 <= bytes.size(); ++offset)
    for (uint32_t absurd : {0xffffffffu, 0x7fffffffu, 0x80000000u, 0x40000000u, 0u, 35u, 36u, 132u})
      readEverything(std::string(bytes).replace(offset, 4, word(absurd)));
}

}  // namespace
