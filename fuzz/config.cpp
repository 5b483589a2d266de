// The configuration file. An input is a value up to a byte 0, and a file: it is read, rewritten unchanged,
// with that value, and with a list of the value's lines under an existing key, and read again.

#include <set>
#include <sstream>

#include <fokrazo/log.h>
#include <fokrazo/properties.h>
#include "fuzz/fuzz_input.h"
#include "fuzz/world.h"

using namespace vesk;

namespace {

const std::string kFile = "/etc/velmora/fuzz.conf";
const std::string kKey = "fuzz.key";

Properties::Map valuesOf(Properties& properties) {
  const auto all = properties.getMap("");
  return all ? *all : Properties::Map();
}

// Whether the file now has these values; prints differences.
bool readsAs(const Properties::Map& expected) {
  Properties reading;
  reading.load(kFile.c_str(), true);
  const Properties::Map values = valuesOf(reading);
  const auto report = [](const char* when, const Properties::Map& map, const Properties::Map& other) {
    for (const auto& [key, value] : map)
      if (const auto same = other.find(key); same == other.end() || same->second != value)
        fprintf(stderr, "%s: \"%s\" is \"%s\"\n", when, key.c_str(), value.c_str());
  };
  report("before", expected, values);
  report("after", values, expected);
  return values == expected;
}

// Every kind of lookup, except of lists that refer to a file, which could be any file.
void lookUp(Properties& properties) {
  for (const auto& entry : valuesOf(properties)) {
    const std::string& key = entry.first;
    FUZZ_CHECK(properties.getString(key) == entry.second);
    FUZZ_CHECK(properties.keyExists(key));
    properties.getInt(key, 0);
    properties.getBool(key, false);
    properties.getTime(key, 's', 1);
    if (entry.second.find("file:") == std::string::npos) properties.getValueList(key, "");
  }
  std::ostringstream out;
  properties.store(out, "header");
}

// The lines of the value; empty if it looks like a reference to a file.
Properties::ValueList listOf(const std::string& value) {
  std::istringstream stream(value);
  Properties::ValueList list = *Properties::getValueList(stream);
  if (!list.empty() && Properties::isFileReference(list.front())) list.clear();
  return list;
}

// A list reads back as its items.
void tryList(Properties& properties, const Properties::ValueList& list) {
  properties.setValueList(kKey, list, true);
  FUZZ_CHECK(*properties.getValueList(kKey, "") == list);
}

using Keys = std::multiset<std::string, StringCaseLessThan>;

// The keys of the lines, and of comments as a save reads them.
Keys keysOf(const std::string& content, bool skipComments) {
  Keys keys;
  std::istringstream stream(content);
  std::string line;
  std::string extra;
  std::string key;
  std::string value;
  while (stream.good()) {
    Properties::getLine(stream, line, extra, skipComments);
    if (!skipComments && Properties::isComment(line)) line.erase(0, line.find_first_not_of("#!"));
    if (Properties::getPropertyFromLine(line, key, value)) keys.insert(key);
  }
  return keys;
}

// Whether a save may move a line, to an earlier one with its key or out of a continued comment, where its
// variables may have other values.
bool movesVariables(const std::string& content) {
  if (content.find('$') == std::string::npos) return false;
  const Keys seen = keysOf(content, false);
  const Keys read = keysOf(content, true);
  for (const std::string& key : read)
    if (seen.count(key) != 1 || read.count(key) != 1) return true;
  return false;
}

bool namesValue(std::string comment, const Properties::Map& values) {
  comment.erase(0, comment.find_first_not_of("#!"));
  std::string key;
  std::string value;
  return Properties::getPropertyFromLine(comment, key, value) && values.count(key) != 0;
}

// The first lines of the comments that a save keeps: those without a value's key.
std::multiset<std::string> commentsOf(const std::string& content, const Properties::Map& values) {
  std::multiset<std::string> comments;
  std::istringstream stream(content);
  std::string line;
  std::string whole;
  std::string extra;
  for (bool continues = false; stream.good();) {
    const auto begin = stream.tellg();
    Properties::getLine(stream, whole, extra, false);
    stream.clear();
    stream.seekg(begin);
    Properties::getLine(stream, line, extra, true);
    const bool isComment = Properties::isComment(line);
    if (isComment && !continues && !namesValue(whole, values) && !namesValue(line, values))
      comments.insert(line);
    continues = isComment && Properties::isEscaped(line);
  }
  return comments;
}

void rewriteUnchanged(const std::string& content, const Properties::Map& expected) {
  Properties file(false);
  file.load(kFile.c_str(), false);
  FUZZ_CHECK(file.saveProperty(kFile) == 0);
  FUZZ_CHECK(readsAs(expected));
  const auto before = commentsOf(content, expected);
  const auto after = commentsOf(fuzz::read(kFile), expected);
  FUZZ_CHECK(std::includes(after.begin(), after.end(), before.begin(), before.end()));
}

void rewriteWith(Properties::Map expected, const std::string& value) {
  bool wasSet = false;
  FUZZ_CHECK(Properties::update(kFile, [&](Properties& file) {
               wasSet = file.setString(kKey, value);
               return true;
             }) == 0);
  if (wasSet) expected[kKey] = value;
  FUZZ_CHECK(readsAs(expected));
}

void rewriteWithList(const std::string& key, const Properties::ValueList& list) {
  FUZZ_CHECK(Properties::update(kFile, [&](Properties& file) {
               file.setValueList(key, list, true);
               return true;
             }) == 0);
  Properties reading;
  reading.load(kFile.c_str(), true);
  FUZZ_CHECK(*reading.getValueList(key, "") == list);
}

bool prepare() {
  fuzz::enterWorld("log: FATAL\n");
  Logger::close();  // the tree of loggers would grow with every input
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool prepared = prepare();
  fuzz::Input input(data, size);
  const std::string value = input.upTo('\0');
  const std::string content = input.rest();
  fuzz::write(kFile, content);
  Properties reading;
  std::istringstream stream(content);
  reading.load(stream, true);
  lookUp(reading);
  const Properties::Map values = valuesOf(reading);
  const Properties::ValueList list = listOf(value);
  tryList(reading, list);
  if (movesVariables(content) || content.find('\0') != std::string::npos) return 0;
  rewriteUnchanged(content, values);
  rewriteWith(values, value);
  rewriteWithList(values.empty() ? kKey : values.begin()->first, list);
  return prepared ? 0 : -1;
}
