// The configuration file. An input is a value up to a byte 0, and a file: it is read, rewritten unchanged,
// rewritten with that value, and read again.

#include <fstream>
#include <iterator>
#include <sstream>

#include "fuzz/fuzz_input.h"
#include "fuzz/world.h"
#include "util/include/log.h"
#include "util/include/properties.h"

using namespace vesk;

namespace {

const std::string kFile = "/etc/velmora/fuzz.conf";
const std::string kKey = "fuzz.key";

Properties::Map valuesOf(Properties& properties) {
  const auto all = properties.getMap("");
  return all ? *all : Properties::Map();
}

// Every kind of lookup. Lists that name a file are left out: the file could be anything.
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

// A list that is set reads back as its items.
void tryList(Properties& properties, const std::string& value) {
  std::istringstream stream(value);
  const auto list = Properties::getValueList(stream);
  properties.setValueList(kKey, *list, true);
  FUZZ_CHECK(*properties.getValueList(kKey, "") == *list);
}

void rewriteUnchanged(const Properties::Map& expected) {
  Properties file(false);
  file.load(kFile.c_str(), false);
  FUZZ_CHECK(file.saveProperty(kFile) == 0);
  Properties reading;
  reading.load(kFile.c_str(), true);
  FUZZ_CHECK(valuesOf(reading) == expected);
}

void rewriteWith(Properties::Map expected, const std::string& value) {
  bool wasSet = false;
  FUZZ_CHECK(Properties::update(kFile, [&](Properties& file) {
               wasSet = file.setString(kKey, value);
               return true;
             }) == 0);
  if (wasSet) expected[kKey] = value;
  Properties reading;
  reading.load(kFile.c_str(), true);
  FUZZ_CHECK(valuesOf(reading) == expected);
}

bool prepare() {
  fuzz::enterWorld("log: FATAL\n");
  Logger::close();  // the tree of loggers would grow with every name that is tried
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
  tryList(reading, value);
  rewriteUnchanged(values);
  rewriteWith(values, value);
  return prepared ? 0 : -1;
}
