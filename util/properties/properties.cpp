#include <fokrazo/properties.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <istream>
#include <memory>

#include <fokrazo/ascii.h>
#include <fokrazo/fixed_paths.h>
#include <fokrazo/log.h>
#include "util/file/file_io.h"
#include "util/hook/hooks.h"
#include "util/properties/property_line.h"
#include "util/text/printed.h"
#include "util/thread/fork_locks.h"

using vesk::kBlockSize;
using vesk::Lock;
using vesk::Properties;

namespace {

constexpr char kLogger[] = "util.properties";
constexpr char kDefaultPrefix[] = "brondalt";
/// A number of seconds that the default replaces.
constexpr long kNoTime = 0x7FFF573F;

struct TimeText {
  bool hasNumber = false;
  int number = 0;
  bool hasUnit = false;
  char unit = 0;
};

// Saturates on overflow.
TimeText scanTime(const std::string& text) {
  TimeText time;
  char* end;
  const long number = strtol(text.c_str(), &end, 10);
  time.hasNumber = end != text.c_str();
  time.number = static_cast<int>(std::min<long>(std::max<long>(number, INT_MIN), INT_MAX));
  time.hasUnit = time.hasNumber && *end != '\0';
  time.unit = *end;
  return time;
}

// The object of Props. Once it exists, Props returns it without locking gPropMtx: a load, which holds the
// object's mutex, calls Props too, and gPropMtx must be taken before that mutex.
std::atomic<Properties*> gMade{nullptr};

// A child forked during a load loads again.
void abandonInstance(bool intact) {
  if (intact) return;
  gMade.store(nullptr, std::memory_order_release);
  Properties::gVeskProperties = nullptr;
}

Properties* makeInstance(bool debugDump) {
  vesk::inForkedChild(vesk::ForkOrder::PropertiesMaking, abandonInstance);
  vesk::inForkedChild(vesk::ForkOrder::Properties, abandonInstance);
  Lock lock(vesk::heldOverFork(vesk::ForkOrder::PropertiesMaking, Properties::gPropMtx));
  Properties*& instance = Properties::gVeskProperties;
  if (instance) return instance;
  instance = new Properties(true, debugDump);
  vesk::heldOverFork(vesk::ForkOrder::Properties, instance->mutex);
  // From now on other threads find it and wait for the load.
  Lock loading(instance->mutex);
  gMade.store(instance, std::memory_order_release);
  instance->load(vesk::paths::kConfigFile, true);
  return instance;
}

// Reads the rest of the stream. Returns false if reading fails or the text is too long.
bool readStream(std::istream& stream, std::string& text) {
  std::string block(kBlockSize, '\0');
  while (stream.good() && text.size() <= vesk::kMaxPropertyFile) {
    stream.read(block.data(), kBlockSize);
    text.append(block, 0, stream.gcount());
  }
  return stream.eof() && !stream.bad();
}

// Overflows silently.
long multiply(unsigned long number, long factor) {
  return static_cast<long>(number * static_cast<unsigned long>(factor));
}

}  // namespace

namespace vesk {

/// Writes or logs one entry.
class Properties::Print {
 public:
  explicit Print(std::ostream& stream) : m_stream(&stream), m_debug(false) {}
  /// To the log, at DEBUG with `debug` and at TRACE without.
  explicit Print(bool debug) : m_stream(nullptr), m_debug(debug) {}

  void operator()(const Table::value_type& entry) {
    const std::string& value = entry.second.value();
    if (m_stream) {
      *m_stream << entry.first << '=' << value << '\n';
    } else if (m_debug) {
      VESK_LOG_TO(kLogger, Debug, "property: %s=%s", entry.first.c_str(), value.c_str());
    } else {
      VESK_LOG_TO(kLogger, Trace, "property: %s=%s", entry.first.c_str(), value.c_str());
    }
  }

 private:
  std::ostream* const m_stream;  // null: the log
  const bool m_debug;
};

void Property::set(const std::string& raw) {
  m_value = raw;
  PropertySyntax::removeEscapes(m_value);
  PropertySyntax::unescapeValue(m_value);
  m_raw.reset(m_value == raw ? nullptr : new std::string(raw));
  m_hasRaw = true;
}

Properties* Properties::gVeskProperties = nullptr;
Mutex& Properties::gPropMtx = *new Mutex;

Properties::Properties(bool expandVariables, bool debugDump)
    : m_expandVariables(expandVariables), m_debugDump(debugDump) {}

Properties::~Properties() = default;

void Properties::load(const char* path, bool expand) {
  Lock lock(mutex);
  std::string text;
  if (readWholeFile(path, 0, text, kMaxPropertyFile)) {
    loadText(text, expand);
    return;
  }
  m_loaded = false;
  VESK_LOG(getLogger(kLogger, false), Error, "Unable to load property file: %s", path);
}

void Properties::load(std::istream& stream, bool expand) {
  Lock lock(mutex);
  std::string text;
  if (!stream.fail() && readStream(stream, text)) {
    loadText(text, expand);
    return;
  }
  begin(expand);
  VESK_LOG(getLogger(kLogger, false), Error, "No property stream available");
}

void Properties::loadText(const std::string& text, bool expand) {
  parse(text, expand);
  kHooks.configurationLoaded(*this);
  const auto logger = getLogger(kLogger, false);
  if (!logger || !logger->isEnabled(Logger::Debug)) return;
  Print print(m_debugDump);
  for (const auto& entry : m_table) print(entry);
}

bool Properties::reload() {
  Lock lock(mutex);
  m_table.clear();
  m_listCache.clear();
  m_variables.clear();
  load(paths::kConfigFile, true);
  return m_loaded;
}

// Keeps the final values of earlier loads: a load merges into them.
void Properties::begin(bool expand) {
  m_expandVariables = expand;
  m_loaded = false;
  m_modified = false;
  m_expansionLeft = kMaxExpansion;
  for (auto& entry : m_table) entry.second.forgetRaw();
  m_listCache.clear();
}

void Properties::parse(const std::string& file, bool expand) {
  begin(expand);
  loadVariables();
  TextLines lines(file);
  std::string line;
  std::string extra;
  std::string key;
  std::string text;
  Table::iterator last = m_table.end();
  while (!lines.atEnd()) {
    readLogicalLine(lines, line, extra, true);
    if (getPropertyFromLine(line, key, text)) last = assign(last, key, text);
  }
  m_loaded = true;
}

// `text` comes from getPropertyFromLine and becomes the raw value. The search for the key starts after
// `near`, because files tend to group related keys. Returns the key's position.
Properties::Table::iterator Properties::assign(Table::iterator near, const std::string& key,
                                               std::string& text) {
  expandEnvVariables(text);
  if (near != m_table.end()) ++near;
  const auto entry = m_table.try_emplace(near, key);
  entry->second.set(text);
  return entry;
}

void Properties::change(const std::string& key, const std::string& raw) {
  m_table[key].set(raw);
  changed(key);
}

// The cache may contain the list under several spellings of the key.
void Properties::changed(const std::string& key) {
  for (auto cached = m_listCache.begin(); cached != m_listCache.end();) {
    const bool same = equalIgnoringCase(cached->first, key);
    cached = same ? m_listCache.erase(cached) : std::next(cached);
  }
  m_modified = true;
}

bool Properties::loaded() {
  Lock lock(mutex);
  return m_loaded;
}

bool Properties::modified() {
  Lock lock(mutex);
  return m_modified;
}

bool Properties::lookup(const std::string& key, std::string& value) {
  Lock lock(mutex);
  const auto found = m_table.find(key);
  if (found == m_table.end()) return false;
  value = found->second.value();
  return true;
}

std::string Properties::getString(const std::string& key) {
  std::string value;
  lookup(key, value);
  return value;
}

int Properties::getInt(const std::string& key, int fallback) {
  const std::string value = getString(key);
  return value.empty() ? fallback : static_cast<int>(strtol(value.c_str(), nullptr, 10));
}

bool Properties::getBool(const std::string& key, bool fallback) {
  const std::string value = getString(key);
  for (const char* yes : {"true", "yes", "1"})
    if (equalIgnoringCase(value, yes)) return true;
  for (const char* no : {"false", "no", "0"})
    if (equalIgnoringCase(value, no)) return false;
  return fallback;
}

long Properties::getTime(const std::string& key, char unit, unsigned int fallback) {
  const long factor = timeFactor(unit);
  const long fallbackSeconds = multiply(fallback, factor);
  const TimeText time = scanTime(getString(key));
  if (time.hasNumber && time.number == -1) return -1;
  long seconds = fallbackSeconds;
  if (time.hasNumber && time.number < 0) {
    VESK_LOG_TO(kLogger, Warn,
                "Negative time specification in property file for %s is ignored.  Using default.",
                key.c_str());
  } else if (time.hasNumber) {
    const long ownFactor = time.hasUnit ? timeFactor(time.unit) : factor;
    // A bad unit in the file selects the default; a bad `unit` makes the time 0.
    if (ownFactor != 0 || !time.hasUnit) seconds = multiply(time.number, ownFactor);
    if (seconds == kNoTime) seconds = fallbackSeconds;
  }
  VESK_LOG_TO(kLogger, Trace, "%s: %ld seconds", key.c_str(), seconds);
  return seconds;
}

std::unique_ptr<Properties::Map> Properties::getMap(const std::string& prefix) {
  Lock lock(mutex);
  iterator begin;
  iterator end;
  if (!filter(prefix, begin, end)) return nullptr;
  auto map = std::make_unique<Map>();
  for (; begin != end; ++begin) map->emplace_hint(map->end(), begin->first, begin->second.value());
  return map;
}

// All keys with the prefix are adjacent, because the order ignores case as the prefix does.
bool Properties::filter(const std::string& prefix, iterator& begin, iterator& end) {
  Lock lock(mutex);
  begin = m_table.lower_bound(prefix);
  end = begin;
  while (end != m_table.end() && startsIgnoringCase(end->first, prefix)) ++end;
  return begin != end;
}

Properties::iterator Properties::findPrefix(const std::string& prefix) {
  Lock lock(mutex);
  iterator found = m_table.begin();
  while (found != m_table.end() && found->first.compare(0, prefix.size(), prefix) != 0) ++found;
  return found;
}

bool Properties::keyExists(const std::string& key) {
  Lock lock(mutex);
  const auto found = m_table.find(key);
  return found != m_table.end() && found->first == key;
}

std::string Properties::makeKey(const std::string& prefix, const std::string& key,
                                const std::string& suffix) {
  std::string made = (prefix.empty() ? kDefaultPrefix : prefix) + "." + key;
  if (!suffix.empty()) made += "." + suffix;
  return made;
}

bool Properties::setString(const std::string& key, const std::string& value) {
  return setText(key, encodeValue(value, true));
}

bool Properties::setText(const std::string& key, const std::string& text) {
  std::string line;
  if (!isSingleLine(text) || !putPropertyToLine(line, key, "", true)) return false;
  std::string readKey;
  std::string value;
  getPropertyFromLine(line + text, readKey, value);
  Lock lock(mutex);
  expandEnvVariables(value);
  change(key, value);
  return true;
}

bool Properties::remove(const std::string& key) {
  Lock lock(mutex);
  if (m_table.erase(key) == 0) return false;
  changed(key);
  return true;
}

void Properties::store(std::ostream& stream, const std::string& header) {
  if (!header.empty()) stream << '#' << header << '\n';
  Print print(stream);
  Lock lock(mutex);
  for (const auto& entry : m_table) print(entry);
}

void Properties::dump() {
  printTo(stderr, [this](std::ostream& stream) { store(stream, "Properties dump"); });
}

}  // namespace vesk

Properties* Props(bool debugDump, bool reload) {
  Properties* const made = gMade.load(std::memory_order_acquire);
  if (!made) return makeInstance(debugDump);
  if (reload) made->reload();
  return made;
}
