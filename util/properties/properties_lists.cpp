// List values of the configuration file.
#include <algorithm>
#include <sstream>

#include <boost/make_shared.hpp>

#include <fokrazo/log.h>
#include <fokrazo/properties.h>
#include <fokrazo/secure_open.h>
#include "util/file/file_io.h"
#include "util/properties/property_line.h"

namespace vesk {

namespace {

constexpr char kLogger[] = "util.properties";

/// The log message for a refused values file: a format for its path and the property's key.
struct Refusal {
  int status;
  Logger::LogLevel level;
  const char* text;
};

// The last row matches every other status.
constexpr Refusal kRefusals[] = {
    {SECURE_OPEN_MISSING, Logger::Debug, "Config file [%s] does not exist."},
    {SECURE_OPEN_FOREIGN_OWNER, Logger::Warn,
     "Config file [%s] is not owned by root. Skip reading config file for property %s. Please change its "
     "owner to root to enhance security."},
    {SECURE_OPEN_WORLD_WRITABLE, Logger::Warn,
     "Config file [%s] is world writable. Skip reading config file for property %s. Please ensure the file "
     "is not world writable to enhance security."},
    {SECURE_OPEN_DENIED, Logger::Warn,
     "No permission to access config file [%s]. Skip reading config file for property %s. Please ensure the "
     "file is accessible."},
    {SECURE_OPEN_SYMLINK, Logger::Warn,
     "Config file [%s] is symlink. Skip reading config file for property %s. Please ensure the file is not "
     "symlink"},
    {SECURE_OPEN_HARDLINKED, Logger::Warn,
     "Config file [%s] has more than one hardlinks. Skip reading config file for property %s. Please ensure "
     "the file has only one hardlink"},
    {SECURE_OPEN_FAILED, Logger::Debug,
     "Cannot open config file [%s] due to unknown error. Skip reading config file for property %s."},
};

void reportRefusal(int status, const std::string& path, const std::string& key) {
  const auto logger = getLogger(kLogger, false);
  const Refusal* row = kRefusals;
  while (row->status != status && row->status != SECURE_OPEN_FAILED) row++;
  if (logger && logger->isEnabled(row->level))
    logger->log(row->level, __FILE__, __LINE__, __func__, row->text, path.c_str(), key.c_str());
}

void reportList(const std::string& key, const Properties::ValueList& list) {
  const auto logger = getLogger(kLogger, false);
  if (!logger || !logger->isEnabled(Logger::Debug)) return;
  std::string text = key + ": ";
  for (const std::string& item : list) text += '(' + item + "), ";
  VESK_LOG(logger, Debug, "Property list %s", text.c_str());
}

enum class FileResult { Read, Refused, Unusable };

FileResult readValuesFile(const std::string& path, const std::string& key, bool isDefault,
                          Properties::ValueList& list) {
  int status;
  const UniqueFd file = openSecureFile(path.c_str(), &status);
  if (!file) {
    reportRefusal(status, path, key);
    return FileResult::Refused;
  }
  const auto logger = getLogger(kLogger, false);
  VESK_LOG(logger, Debug, "Opening config file [%s].", path.c_str());
  std::string text;
  if (readAll(file.get(), text, kMaxPropertyFile)) {
    std::istringstream lines(text);
    list = PropertySyntax::readList(lines);
    return FileResult::Read;
  }
  if (isDefault) {
    VESK_LOG(logger, Debug, "Unable to open property values file: %s", path.c_str());
  } else {
    VESK_LOG(logger, Warn, "Unable to open property values file: %s", path.c_str());
  }
  return FileResult::Unusable;
}

/// Whether the text can be written to a line and read back unchanged.
bool isTextOfLine(const std::string& text) {
  std::string key;
  std::string back;
  return isSingleLine(text) && PropertySyntax::getPropertyFromLine("list: " + text, key, back) &&
         back == text;
}

/// Marks dollar signs, as a load without expansion does.
std::string markDollars(const std::string& text) {
  std::string marked;
  for (char c : text) marked.append(c == '$' ? 2 : 1, c);
  return marked;
}

}  // namespace

boost::shared_ptr<Properties::ValueList> Properties::getValueList(std::istream& stream) {
  return boost::make_shared<ValueList>(readList(stream));
}

Properties::ValueListPtr Properties::getValueList(const std::string& key, const std::string& fallback) {
  Lock lock(mutex);
  const auto cached = m_listCache.find(key);
  if (cached != m_listCache.end()) return cached->second;
  ValueList list;
  const bool keeps = makeList(key, fallback, list);
  reportList(key, list);
  const ValueListPtr shared = boost::make_shared<ValueList>(std::move(list));
  if (keeps) m_listCache[key] = shared;
  return shared;
}

bool Properties::makeList(const std::string& key, const std::string& fallback, ValueList& list) {
  const auto found = m_table.find(key);
  const std::string own = found != m_table.end() && found->second.raw() ? *found->second.raw() : "";
  bool refused = false;
  for (const std::string* candidate : {&own, &fallback}) {
    if (candidate->empty()) continue;
    const bool isDefault = candidate == &fallback;
    std::string reference = *candidate;
    removeEscapes(reference);
    if (!isFileReference(reference)) {
      list = splitList(*candidate);
      return !isDefault;
    }
    const std::string path = getFileNameFromFileReference(reference);
    const FileResult result = readValuesFile(path, key, isDefault, list);
    if (result == FileResult::Read) return true;
    refused = refused || result == FileResult::Refused;
  }
  return !refused;
}

// Items are escaped only if they would not read back unchanged. In rewriting mode the result has the dollar
// marks of a load without expansion.
std::string Properties::makeRawList(const ValueList& list, bool keepDollar) {
  std::string raw = valueListToString(list, false, keepDollar, ' ');
  const bool dollarsCount = (keepDollar || !m_expandVariables) && raw.find('$') != std::string::npos;
  if (!dollarsCount && isTextOfLine(raw) && splitList(raw) == list) return raw;
  std::string line;
  std::string key = "list";
  putPropertyToLine(line, key, list, m_expandVariables);
  getPropertyFromLine(line, key, raw);
  expandEnvVariables(raw);
  return raw;
}

Properties::ValueList Properties::markItems(const ValueList& list, bool keepDollar) const {
  if (m_expandVariables || !keepDollar) return list;
  ValueList marked;
  for (const std::string& item : list) marked.push_back(markDollars(item));
  return marked;
}

void Properties::setValueList(const std::string& key, const ValueList& list, bool keepDollar) {
  Lock lock(mutex);
  change(key, makeRawList(markItems(list, keepDollar), keepDollar));
}

bool Properties::addValueList(const std::string& key, const ValueList& list, bool keepDollar) {
  Lock lock(mutex);
  ValueList merged = *getValueList(key, "");
  ValueList added = markItems(list, keepDollar);
  merged.sort();
  added.sort();
  merged.merge(added);
  merged.unique();
  Property changed;
  changed.set(makeRawList(merged, keepDollar));
  if (changed.value() == getString(key)) return false;
  change(key, *changed.raw());
  return true;
}

bool Properties::delValueList(const std::string& key, const ValueList& list, bool keepDollar) {
  Lock lock(mutex);
  ValueList rest = *getValueList(key, "");
  const size_t before = rest.size();
  for (const std::string& item : markItems(list, keepDollar)) rest.remove(item);
  if (rest.size() == before) return false;
  // The rest is already marked.
  setValueList(key, rest, keepDollar && m_expandVariables);
  return true;
}

}  // namespace vesk
