// Setting files. An input is read as a file's content, and then written as a value.

#include <sys/stat.h>

#include <fokrazo/error_util.h>
#include <fokrazo/kset.h>
#include <fokrazo/setting.h>
#include <fokrazo/strutil.h>
#include "fuzz/fuzz_input.h"
#include "fuzz/world.h"

using namespace vesk;

namespace {

bool isAllowed(char c) {
  return c == '\n' || !IsCntrlChar(static_cast<unsigned char>(c));
}

// Sets `value` to the value of a file with these bytes; returns false if the library must refuse the file.
bool valueOf(const std::string& name, const std::string& content, std::string& value) {
  if (content.size() > 1024 && name != SETTING_TRUSTS) return false;
  if (!std::all_of(content.begin(), content.end(), isAllowed)) return false;
  value = trimWhiteSpace(content);
  return true;
}

void readBack(const std::string& name, const std::string& content) {
  std::string expected;
  const bool isReadable = valueOf(name, content, expected);
  bool wasRead = true;
  std::string read;
  try {
    read = readSettingFile(name, "");
  } catch (const VESKException&) {
    wasRead = false;
  }
  FUZZ_CHECK(wasRead == isReadable && read == expected);
}

void tryFile(const std::string& name, const std::string& content) {
  fuzz::write(paths::kDataDir + ("kset." + name), content);
  readBack(name, content);
  clearSettingsMap();
  joined();
  try {
    CheckEssentialKSets();
  } catch (const IOException&) {
  }
}

void tryValue(const std::string& name, const std::string& value) {
  clearSettingsMap();
  try {
    saveSetting(name, value, SETTING_PUBLIC, false, true);
  } catch (const IOException&) {
    FUZZ_CHECK(trimWhiteSpace(value).size() > 1024);
    return;
  }
  clearSettingsMap();
  const std::string trimmed = trimWhiteSpace(value);
  if (trimmed.empty())
    FUZZ_CHECK(!SettingExists(name));
  else
    readBack(name, trimmed);
}

bool prepare() {
  fuzz::enterWorld("log: FATAL\n");
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool prepared = prepare();
  const std::string content(reinterpret_cast<const char*>(data), size);
  for (const char* name : {SETTING_SCHEMA, SETTING_TRUSTS}) {
    tryFile(name, content);
    tryValue(name, content);
  }
  return prepared ? 0 : -1;
}
