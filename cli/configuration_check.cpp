#include "cli/configuration_check.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>

#include <fokrazo/ascii.h>
#include <fokrazo/log.h>
#include <fokrazo/properties.h>
#include <fokrazo/propnames.h>
#include <fokrazo/secure_open.h>
#include "cli/did_you_mean.h"
#include "cli/output.h"

namespace cli {

namespace {

using namespace vesk;

constexpr char kCheck[] = "configuration";

// Returns a description of valid values; empty if the value is valid.
using Judge = std::string (*)(const std::string& value);

std::string text(const std::string&) {
  return "";
}

std::string level(const std::string& value) {
  return TextToLevel(value) >= 0
             ? ""
             : "one of TRACE, DEBUG, DIAG, INFO, WARN, ERROR, FATAL, DISABLED in capitals";
}

std::string facility(const std::string& value) {
  return TextToFacility(value) >= 0 ? "" : "a syslog facility such as auth or daemon";
}

std::string boolean(const std::string& value) {
  for (const char* word : {"true", "yes", "1", "false", "no", "0"})
    if (equalIgnoringCase(value, word)) return "";
  return "true or false";
}

std::string number(const std::string& value) {
  char* end = nullptr;
  errno = 0;
  const long result = strtol(value.c_str(), &end, 10);
  const bool isWhole = end != value.c_str() && *end == '\0' && errno == 0;
  return isWhole && result >= 0 && result <= 0x7fffffff ? "" : "a whole number of 0 or more, without a unit";
}

// As Properties::getTime parses it; -1 means no limit.
std::string time(const std::string& value) {
  char unit = '\0';
  char more = '\0';
  long count = 0;
  const int fields = sscanf(value.c_str(), "%ld%c%c", &count, &unit, &more);
  const bool hasUnit = fields == 2 && strchr("smhdwMy", unit) != nullptr;
  const bool isTime = count >= -1 && (fields == 1 || hasUnit);
  return isTime ? "" : "a time: a number, optionally followed by s, m, h, d, w, M or y";
}

std::string timeAboveZero(const std::string& value) {
  return atoi(value.c_str()) > 0 ? time(value) : "a time above 0";
}

std::string ringSize(const std::string& value) {
  return atoi(value.c_str()) < 10 ? "a number of kilobytes, at least 10" : number(value);
}

std::string destination(const std::string& value) {
  return value == "syslog" || value == "file" || value[0] == '/' ? "" : "syslog, file or an absolute path";
}

// The keys that the library reads. A stem is followed by a dot and a name of the administrator's choice.
struct Key {
  const std::string& name;
  Judge judge;
  enum Form { Plain, Stem, PlainOrStem } form = Plain;
};

const Key kKeys[] = {
    {PN::ROOT_LOGGER_NAME, level, Key::PlainOrStem},
    {PN::LOGGER_DESTINATION, destination},
    {PN::LOGGER_FACILITY, facility, Key::Stem},
    {PN::LOGGER_FILE_FLUSH_FREQUENCY, number},
    {PN::LOGGER_FILE_MAXCOUNT, number},
    {PN::LOGGER_FILE_MAXSIZE, number},
    {PN::LOGGER_FILE_ZIP_BACKUP, boolean},
    {PN::LOGGER_MEMORY_ENABLED, boolean},
    {PN::ROOT_MEMORY_NAME, level, Key::PlainOrStem},
    {PN::LOGGER_MEMORY_SIZE, ringSize},
    {PN::LOGGER_OPENLOG, boolean, Key::Stem},
    {PN::LOGGER_PROGRAM_IGNORE, text},
    {PN::LOGGER_QUEUE_SIZE, number},
    {PN::LOGGER_SHOW_MORE, number, Key::PlainOrStem},
    {PN::LRPC_CONNECT_TIMEOUT, timeAboveZero},
    {PN::LRPC_MESSAGE_MAXSIZE, number},
    {PN::LRPC_SESSION_TIMEOUT, number},
    {PN::LRPC_TIMEOUT, time},
    {PN::VESKD_STACKSIZE_CLIENT_THREADS, number},
    {PN::VESKD_USE_THREAD_PRIORITY, boolean},
    {PN::DISABLE_KSET_FILES, boolean},
    {PN::KRB5_PERMIT_DNS_SPN_LOOKUPS, boolean},
    {PN::LIBSELINUX_NAME, text},
    {PN::NSS_NOBODY_GID, number},
    {PN::NSS_NOBODY_GROUP, text},
    {PN::NSS_NOBODY_UID, number},
    {PN::NSS_NOBODY_USER, text},
    {PN::NSS_NOLOGIN_SHELL, text},
};

// All keys with these prefixes belong to the library.
constexpr const char* kOwnFamilies[] = {"log", "log.", "logger.", "lrpc."};

bool isOwn(const std::string& key) {
  if (equalIgnoringCase(key, kOwnFamilies[0])) return true;
  for (size_t i = 1; i < sizeof kOwnFamilies / sizeof *kOwnFamilies; ++i)
    if (startsIgnoringCase(key, kOwnFamilies[i])) return true;
  return false;
}

bool fits(const Key& row, const std::string& key) {
  const bool isPlain = equalIgnoringCase(key, row.name);
  const bool hasStem = key.size() > row.name.size() + 1 && startsIgnoringCase(key, row.name + '.');
  return (isPlain && row.form != Key::Stem) || (hasStem && row.form != Key::Plain);
}

const Key* findKey(const std::string& key) {
  for (const Key& row : kKeys)
    if (fits(row, key)) return &row;
  return nullptr;
}

// Collects the findings.
class Complaints {
 public:
  void add(Finding::State state, const std::string& text, const std::string& advice) {
    m_findings.push_back({state, kCheck, text, advice});
  }
  bool none() const { return m_findings.empty(); }
  std::vector<Finding> take() { return std::move(m_findings); }

 private:
  std::vector<Finding> m_findings;
};

void checkFile(const std::string& path, const struct stat& info, Complaints& complaints) {
  if (info.st_uid != 0)
    complaints.add(Finding::Problem,
                   path + " belongs to user " + std::to_string(info.st_uid) + ", not to root",
                   "chown root " + path);
  if ((info.st_mode & (S_IWGRP | S_IWOTH)) != 0)
    complaints.add(Finding::Problem, path + " can be changed by users other than its owner",
                   "chmod go-w " + path);
}

// If several lines have the same key, the library silently uses the last.
void checkLines(std::istream& stream, Complaints& complaints) {
  std::map<std::string, int, StringCaseLessThan> counts;
  std::string line;
  std::string key;
  std::string value;
  while (stream) {
    Properties::getLine(stream, line);
    if (Properties::getPropertyFromLine(line, key, value) && ++counts[key] == 2)
      complaints.add(Finding::Warning, shown(key) + " occurs more than once; only the last line applies",
                     "remove the other lines");
  }
}

const char* whyRefused(int status) {
  switch (status) {
    case SECURE_OPEN_MISSING:
      return "does not exist";
    case SECURE_OPEN_DENIED:
      return "cannot be read by this user";
    case SECURE_OPEN_SYMLINK:
      return "is a symbolic link";
    case SECURE_OPEN_HARDLINKED:
      return "has more than one hard link";
    case SECURE_OPEN_FOREIGN_OWNER:
      return "does not belong to root";
    case SECURE_OPEN_WORLD_WRITABLE:
      return "can be changed by every user";
    default:
      return "cannot be read";
  }
}

void checkReference(const std::string& key, const std::string& value, Complaints& complaints) {
  const std::string path = Properties::getFileNameFromFileReference(value);
  int status = 0;
  if (FILE* file = SecureOpenForReading(path.c_str(), &status))
    fclose(file);
  else
    complaints.add(Finding::Problem, key + ": " + shown(path) + ' ' + whyRefused(status),
                   "make it a regular file that root owns and only root can change");
}

void checkUnknown(const std::string& key, Complaints& complaints) {
  std::vector<std::string> names;
  for (const Key& row : kKeys) names.push_back(row.form == Key::Stem ? row.name + ".*" : row.name);
  std::string text = shown(key) + " is not a key of the library";
  if (const std::string name = closest(key, names); !name.empty()) text += "; did you mean " + name + "?";
  complaints.add(Finding::Warning, text, "see velmora.conf(5) for the keys");
}

void checkValue(const std::string& key, const std::string& value, Complaints& complaints) {
  if (Properties::isFileReference(value)) return checkReference(shown(key), value, complaints);
  const Key* row = findKey(key);
  if (!row) {
    if (isOwn(key)) checkUnknown(key, complaints);
    return;
  }
  const std::string expected = value.empty() ? "" : row->judge(value);
  if (!expected.empty())
    complaints.add(Finding::Problem, shown(key) + ": '" + shown(value) + "' is not " + expected,
                   "correct it; until then the default or part of the value applies; see velmora.conf(5)");
}

void checkContents(const std::string& path, Complaints& complaints) {
  std::ifstream stream(path);
  if (!stream) return complaints.add(Finding::Problem, path + ": " + strerror(errno), "chmod a+r " + path);
  checkLines(stream, complaints);
  Properties properties;
  properties.load(path.c_str(), true);
  if (const std::unique_ptr<Properties::Map> entries = properties.getMap(""))
    for (const auto& entry : *entries) checkValue(entry.first, entry.second, complaints);
}

}  // namespace

std::vector<Finding> checkConfiguration(const std::string& path) {
  Complaints complaints;
  struct stat info;
  if (stat(path.c_str(), &info) != 0) {
    complaints.add(Finding::Warning, path + ": " + strerror(errno) + "; every key has its default",
                   "create it; it may be empty");
    return complaints.take();
  }
  if (!S_ISREG(info.st_mode)) {
    complaints.add(Finding::Problem, path + " is not a regular file",
                   "replace it with a regular file; it may be empty");
    return complaints.take();
  }
  checkFile(path, info, complaints);
  checkContents(path, complaints);
  if (complaints.none()) complaints.add(Finding::Ok, path, "");
  return complaints.take();
}

}  // namespace cli
