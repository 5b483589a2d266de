#include "cli/doctor/configuration_keys.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>

#include <fokrazo/ascii.h>
#include <fokrazo/log.h>
#include <fokrazo/properties.h>
#include <fokrazo/propnames.h>
#include "cli/did_you_mean.h"

namespace cli {

using namespace vesk;

namespace {

using Key = ConfigurationKey;

// Ids are read as unsigned numbers. 0 would be root, the last one stands for "no id".
constexpr long long kMostId = 0xfffffffe;
// The length of a message has 32 bits.
constexpr long long kMostMegabytes = 4095;

// clang-format off
const Key kKeys[] = {
    {PN::ROOT_LOGGER_NAME,               Key::PlainOrStem, Key::Level,       "INFO",   0,  0,              ""},
    {PN::LOGGER_DESTINATION,             Key::Plain,       Key::Destination, "syslog", 0,  0,              ""},
    {PN::LOGGER_FACILITY,                Key::Stem,        Key::Facility,    "auth",   0,  0,              ""},
    {PN::LOGGER_FILE_FLUSH_FREQUENCY,    Key::Plain,       Key::Number,      "10",     0,  512,            "messages"},
    {PN::LOGGER_FILE_MAXCOUNT,           Key::Plain,       Key::Number,      "5",      0,  9999,           "files"},
    {PN::LOGGER_FILE_MAXSIZE,            Key::Plain,       Key::Number,      "512",    0,  INT_MAX,        "megabytes"},
    {PN::LOGGER_FILE_ZIP_BACKUP,         Key::Plain,       Key::Boolean,     "false",  0,  0,              ""},
    {PN::LOGGER_MEMORY_ENABLED,          Key::Plain,       Key::Boolean,     "false",  0,  0,              ""},
    {PN::ROOT_MEMORY_NAME,               Key::PlainOrStem, Key::Level,       "INFO",   0,  0,              ""},
    {PN::LOGGER_MEMORY_SIZE,             Key::Plain,       Key::Number,      "128",    10, INT_MAX / 1024, "kilobytes"},
    {PN::LOGGER_OPENLOG,                 Key::Stem,        Key::Boolean,     "true",   0,  0,              ""},
    {PN::LOGGER_PROGRAM_IGNORE,          Key::Plain,       Key::Text,        "",       0,  0,              ""},
    {PN::LOGGER_QUEUE_SIZE,              Key::Plain,       Key::Number,      "256",    0,  INT_MAX,        "messages"},
    {PN::LOGGER_SHOW_MORE,               Key::PlainOrStem, Key::Number,      "0",      0,  7,              "the sum of 1, 2 and 4"},
    {PN::LRPC_CONNECT_TIMEOUT,           Key::Plain,       Key::Time,        "5",      1,  INT_MAX,        ""},
    {PN::LRPC_MESSAGE_MAXSIZE,           Key::Plain,       Key::Number,      "256",    0,  kMostMegabytes, "megabytes"},
    {PN::LRPC_SESSION_TIMEOUT,           Key::Plain,       Key::Number,      "30",     0,  INT_MAX,        "seconds"},
    {PN::LRPC_TIMEOUT,                   Key::Plain,       Key::Time,        "300",    -1, INT_MAX,        ""},
    {PN::VESKD_STACKSIZE_CLIENT_THREADS, Key::Plain,       Key::Number,      "0",      0,  INT_MAX,        "bytes"},
    {PN::VESKD_USE_THREAD_PRIORITY,      Key::Plain,       Key::Boolean,     "false",  0,  0,              ""},
    {PN::DISABLE_KSET_FILES,             Key::Plain,       Key::Boolean,     "false",  0,  0,              ""},
    {PN::KRB5_PERMIT_DNS_SPN_LOOKUPS,    Key::Plain,       Key::Boolean,     "false",  0,  0,              ""},
    {PN::LIBSELINUX_NAME,                Key::Plain,       Key::Text,        "",       0,  0,              ""},
    {PN::NSS_NOBODY_GID,                 Key::Plain,       Key::Id,          "65534",  1,  kMostId,        ""},
    {PN::NSS_NOBODY_GROUP,               Key::Plain,       Key::Text,        "",       0,  0,              ""},
    {PN::NSS_NOBODY_UID,                 Key::Plain,       Key::Id,          "65534",  1,  kMostId,        ""},
    {PN::NSS_NOBODY_USER,                Key::Plain,       Key::Text,        "",       0,  0,              ""},
    {PN::NSS_NOLOGIN_SHELL,              Key::Plain,       Key::Text,        "",       0,  0,              ""},
};
// clang-format on

// The names that <fokrazo/propnames.h> declares; the build writes the list.
const std::string* const kNames[] = {
#include "known_keys.inc"
};

// All keys with these prefixes, and "log", are the library's.
constexpr const char* kFamilies[] = {"log.", "logger.", "lrpc."};

bool fits(const Key& row, const std::string& key) {
  const bool isPlain = equalIgnoringCase(key, row.name);
  const bool hasStem = key.size() > row.name.size() + 1 && startsIgnoringCase(key, row.name + '.');
  return (isPlain && row.form != Key::Stem) || (hasStem && row.form != Key::Plain);
}

// What follows as many dotted parts as `name` has: ".sshd" for a.b.sshd and the name x.y.
std::string afterStem(const std::string& key, const std::string& name) {
  size_t end = 0;
  for (auto parts = 1 + std::count(name.begin(), name.end(), '.'); parts > 0 && end != std::string::npos;
       --parts)
    end = key.find('.', end + 1);
  return end == std::string::npos ? "" : key.substr(end);
}

std::string oneOf(const std::string& value, std::initializer_list<const char*> words, const char* expected) {
  for (const char* word : words)
    if (equalIgnoringCase(value, word)) return "";
  return expected;
}

// Reads an optional minus and digits at the beginning of the text. Returns their number of characters, 0 if
// the number is missing or too large.
size_t readWhole(const std::string& text, long long& number) {
  if (text.empty() || (text[0] != '-' && !isAsciiDigit(text[0]))) return 0;
  char* end = nullptr;
  errno = 0;
  number = strtoll(text.c_str(), &end, 10);
  return errno == 0 ? static_cast<size_t>(end - text.c_str()) : 0;
}

bool isWithin(long long number, const Key& row) {
  return number >= row.least && number <= row.most;
}

std::string expectedNumber(const Key& row, const std::string& value) {
  long long number = 0;
  // The library reads a leading 0 of an id as octal.
  const bool isOctal = row.kind == Key::Id && value[0] == '0';
  if (!isOctal && readWhole(value, number) == value.size() && isWithin(number, row)) return "";
  const std::string range =
      "a whole number from " + std::to_string(row.least) + " to " + std::to_string(row.most);
  return *row.note ? range + " (" + row.note + ')' : range;
}

std::string expectedTime(const Key& row, const std::string& value) {
  long long number = 0;
  const size_t digits = readWhole(value, number);
  const std::string unit = value.substr(digits);
  const long factor = unit.empty() ? 1 : Properties::timeFactor(unit[0]);
  const bool isTime = digits > 0 && unit.size() <= 1 && factor != 0 && number <= row.most / factor;
  const bool isEndless = number == -1 && unit.empty();
  if (isTime && isWithin(number, row) && (number >= 0 || isEndless)) return "";
  return "a time from " + std::to_string(std::max(row.least, 0LL)) + " to " + std::to_string(row.most) +
         " seconds: a number, optionally followed by s, m, h, d, w, M or y" +
         (row.least < 0 ? ", or -1 for no limit" : "");
}

}  // namespace

const ConfigurationKey* findKey(const std::string& key) {
  const auto* row =
      std::find_if(std::begin(kKeys), std::end(kKeys), [&](const Key& one) { return fits(one, key); });
  return row == std::end(kKeys) ? nullptr : row;
}

std::vector<std::string> libraryKeys() {
  std::vector<std::string> names;
  for (const Key& row : kKeys) {
    if (row.form != Key::Stem) names.push_back(row.name);
    if (row.form != Key::Plain) names.push_back(row.name + ".*");
  }
  return names;
}

bool isLibraryFamily(const std::string& key) {
  return equalIgnoringCase(key, "log") ||
         std::any_of(std::begin(kFamilies), std::end(kFamilies),
                     [&](const char* family) { return startsIgnoringCase(key, family); });
}

bool isKnownKey(const std::string& key) {
  return findKey(key) || std::any_of(std::begin(kNames), std::end(kNames), [&](const std::string* name) {
           return equalIgnoringCase(key, *name) || startsIgnoringCase(key, *name + '.');
         });
}

std::string meantKey(const std::string& key) {
  std::vector<std::string> names = libraryKeys();
  if (!isLibraryFamily(key))
    for (const std::string* name : kNames) names.push_back(*name);
  const std::string meant = closest(key, names);
  if (!meant.empty()) return meant;
  for (const Key& row : kKeys) {
    const std::string rest = row.form == Key::Plain ? "" : afterStem(key, row.name);
    const std::string stem = key.substr(0, key.size() - rest.size());
    if (!rest.empty() && !closest(stem, {row.name}).empty()) return row.name + rest;
  }
  return "";
}

std::string expectedInstead(const ConfigurationKey& row, const std::string& value) {
  switch (row.kind) {
    case Key::Text:
      return "";
    case Key::Level:
      return TextToLevel(value) >= 0
                 ? ""
                 : "one of TRACE, DEBUG, DIAG, INFO, WARN, ERROR, FATAL, DISABLED in capitals";
    case Key::Facility:
      return TextToFacility(value) >= 0 ? "" : "a syslog facility such as auth or daemon";
    case Key::Boolean:
      return oneOf(value, {"true", "yes", "1", "false", "no", "0"}, "true or false");
    case Key::Number:
    case Key::Id:
      return expectedNumber(row, value);
    case Key::Time:
      return expectedTime(row, value);
    case Key::Destination:
      return value[0] == '/'                        ? ""
             : value == "syslog" || value == "file" ? ""
                                                    : "syslog, file or an absolute path";
  }
  return "";
}

}  // namespace cli
