// Serialized objects: every reader of <fokrazo/adserializer.h> on any bytes, compared with the reference
// reader if that can read them. An input is a blob, or (first byte odd) the attributes of an object to write.

#include <map>
#include <memory>
#include <sstream>
#include <vector>

#include <fokrazo/adobject.h>
#include <fokrazo/adserializer.h>
#include <fokrazo/attrnames.h>
#include <fokrazo/error_util.h>
#include <fokrazo/stringdict.h>
#include "fuzz/fuzz_input.h"
#include "fuzz/reference_blob.h"

using namespace vesk;
using fuzz::ReferenceBlob;

namespace {

using Values = std::vector<std::string>;

Values valuesOf(const ADAttribute& attribute) {
  return {attribute.begin(), attribute.end()};
}

// A blob in a buffer of exactly its size, for the sanitizers.
std::unique_ptr<ADSerializer> hold(const std::string& bytes) {
  std::unique_ptr<char, void (*)(void*)> data(static_cast<char*>(malloc(bytes.size() + bytes.empty())), free);
  std::copy(bytes.begin(), bytes.end(), data.get());
  auto blob = std::make_unique<ADSerializer>(static_cast<unsigned int>(bytes.size()), data.get(), true);
  (void)data.release();  // the blob owns it now
  return blob;
}

std::string bytesOf(const ADSerializer& blob) {
  return std::string(blob.data(), blob.size());
}

bool isInside(const ADSerializer& blob, const void* position, size_t size) {
  const auto* begin = reinterpret_cast<const unsigned char*>(blob.data());
  const auto* at = static_cast<const unsigned char*>(position);
  return !position || (at >= begin && at + size <= begin + blob.size());
}

// Names to look up: those present, similar ones, and some common ones.
Values namesFor(const ReferenceBlob& reference) {
  Values names = {"", AD_DN, AD_OBJECT_CLASS, "zzz"};
  for (const auto& record : reference.records) {
    names.insert(names.end(),
                 {record.name, record.name + "x", record.name.substr(0, record.name.size() / 2)});
    if (names.size() > 64) break;
  }
  return names;
}

void lookUp(const ADSerializer& blob, const std::string& name) {
  FUZZ_CHECK(isInside(blob, blob.findAttribute(name), 4));
  FUZZ_CHECK(isInside(blob, blob.findAttributeKey(name), 0));
  FUZZ_CHECK(isInside(blob, blob.findAttributeData(name), 4));
  const ADAttribute found = blob.find(name);
  FUZZ_CHECK(blob.exists(name, true) == false || blob.exists(name, false));
  GOFAST1 = 0;
  FUZZ_CHECK(blob.find(name) == found);
  GOFAST1 = 1;
}

void lookUpAsWritten(const ADSerializer& blob, const ReferenceBlob& reference) {
  std::map<std::string, Values> all;
  for (const auto& record : reference.records) {
    all[record.name] = record.values;
    const unsigned char* key = blob.findAttributeKey(record.name);
    FUZZ_CHECK(key && reinterpret_cast<const char*>(key) == blob.data() + record.offset);
    unsigned int length = 0;
    const char* name = blob.getName(static_cast<unsigned int>(record.offset), length);
    FUZZ_CHECK(name && std::string(name, length) == record.name);
  }
  for (const std::string& name : namesFor(reference)) {
    const auto expected = all.find(name);
    FUZZ_CHECK(blob.exists(name, false) == (expected != all.end()));
    FUZZ_CHECK(valuesOf(blob.find(name)) == (expected != all.end() ? expected->second : Values()));
  }
}

// Of attributes with the same name the first one wins.
void readAll(ADSerializer& blob, const ReferenceBlob& reference) {
  ADAttributeMap attributes;
  bool wasRead = true;
  try {
    blob.readAll(attributes, ADSerializer::kHeaderSize, ADSerializer::m_dictionary);
  } catch (const BadDataException&) {
    wasRead = false;
  }
  FUZZ_CHECK(wasRead == reference.readable);
  if (!wasRead) return;
  std::map<std::string, Values> expected;
  for (const auto& record : reference.records) expected.emplace(record.name, record.values);
  FUZZ_CHECK(attributes.size() == expected.size());
  for (const auto& entry : expected) FUZZ_CHECK(valuesOf(attributes[entry.first]) == entry.second);
}

void readByOtherDictionaries(ADSerializer& blob) {
  for (const auto& list : {&GetDictionaryVector15487(), &GetDictionaryVector16090()}) {
    const StringArray dictionary(&GetDictionaryMap(), list);
    ADAttributeMap attributes;
    try {
      blob.readAll(attributes, ADSerializer::kHeaderSize, dictionary);
    } catch (const BadDataException&) {
    }
  }
}

void erase(const std::string& bytes, const ReferenceBlob& reference) {
  for (const std::string& name : namesFor(reference)) {
    const auto blob = hold(bytes);
    const bool wasThere = blob->exists(name, false);
    const unsigned int erased = blob->erase(name);
    if (!reference.wellFormed) continue;
    FUZZ_CHECK(erased == (wasThere ? 1U : 0U));
    const std::string left = bytesOf(*blob);
    const ReferenceBlob after(left);
    FUZZ_CHECK(after.wellFormed && after.records.size() == reference.records.size() - erased);
    size_t position = 0;
    for (const auto& record : reference.records) {
      if (record.name == name) continue;
      FUZZ_CHECK(after.records[position].name == record.name &&
                 after.records[position].values == record.values);
      ++position;
    }
  }
}

void dump(const ADSerializer& blob, const ReferenceBlob& reference) {
  std::ostringstream out;
  blob.dump(out);
  bool hasNames = true;
  for (const auto& record : reference.records) hasNames = hasNames && !record.name.empty();
  if (reference.wellFormed && hasNames)
    FUZZ_CHECK(out.str().find("\ntruncated serializer at ") == std::string::npos);
}

ADObject objectOver(const std::string& bytes) {
  return ADObject(static_cast<unsigned int>(bytes.size()), const_cast<char*>(bytes.data()), false, nullptr);
}

void readAsObject(const std::string& bytes, const ReferenceBlob& reference) {
  ADObject object = objectOver(bytes);
  for (const std::string& name : namesFor(reference)) {
    object.attributeExists(name, true);
    object.firstValue(name);
    object.getTime(name, 0);
  }
  object.category();
  object.toString();
}

// An object that is read and written again has the same content.
void writeAgain(const std::string& bytes, const ReferenceBlob& reference) {
  ADObject object = objectOver(bytes);
  object.deSerialize(false);
  const auto written = ADSerializer::serialize(object);
  const std::string again = bytesOf(*written);
  const ReferenceBlob other(again);
  FUZZ_CHECK(other.wellFormed && other.records.size() == reference.records.size());
  for (size_t i = 0; i < other.records.size(); ++i)
    FUZZ_CHECK(other.records[i].name == reference.records[i].name &&
               other.records[i].values == reference.records[i].values);
}

void readBlob(const std::string& bytes) {
  if (bytes.size() < ADSerializer::kHeaderSize) {
    try {
      hold(bytes);
      abort();
    } catch (const BadDataException&) {
    }
    return;
  }
  const ReferenceBlob reference(bytes);
  const auto blob = hold(bytes);
  for (const std::string& name : namesFor(reference)) lookUp(*blob, name);
  unsigned int length = 0;
  for (unsigned int offset = 0; offset < bytes.size() + 8; ++offset) {
    const char* name = blob->getName(offset, length);
    FUZZ_CHECK(name || length == 0);
  }
  if (reference.wellFormed) lookUpAsWritten(*blob, reference);
  readAll(*blob, reference);
  readByOtherDictionaries(*blob);
  erase(bytes, reference);
  dump(*blob, reference);
  if (reference.wellFormed) writeAgain(bytes, reference);
  try {
    readAsObject(bytes, reference);
  } catch (const VESKException&) {  // values that are not times, or an unreadable blob
  }
}

// Attributes from the input: a name and values, each a dictionary index or literal text.
std::string textFrom(fuzz::Input& input) {
  const uint8_t kind = input.byte();
  const auto& dictionary = GetDictionaryVector();
  if (kind & 1) return dictionary[(kind * 256U + input.byte()) % dictionary.size()];
  return input.bytes(kind / 2);
}

void writeObject(fuzz::Input& input) {
  ADObject object("CN=x,DC=example,DC=com");
  std::map<std::string, Values> expected;
  for (const auto& entry : object.attributes()) expected[entry.first] = valuesOf(entry.second);
  for (int left = 200; left > 0 && !input.empty(); --left) {
    const std::string name = textFrom(input);
    if (name == AD_USN_CHANGED) continue;  // read as a number by the writer
    const std::string value = textFrom(input);
    object[name].addVal(value, false, false);
    expected[name].push_back(value);
  }
  const std::string bytes = bytesOf(*object.getSerialized());
  const ReferenceBlob reference(bytes);
  FUZZ_CHECK(reference.wellFormed && reference.records.size() == expected.size());
  for (const auto& record : reference.records) FUZZ_CHECK(expected[record.name] == record.values);
  readBlob(bytes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input input(data, size);
  if (input.byte() & 1)
    writeObject(input);
  else
    readBlob(input.rest());
  return 0;
}
