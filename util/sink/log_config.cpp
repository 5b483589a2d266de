// Applying the configuration to the tree of loggers.

#include <cstdlib>
#include <memory>

#include <fokrazo/log.h>
#include <fokrazo/properties.h>
#include <fokrazo/propnames.h>
#include "util/log/log_internal.h"
#include "util/sink/circular_buffer_internal.h"
#include "util/sink/log_destination_internal.h"
#include "util/sink/log_queue.h"

namespace vesk {
namespace {

// One pass over the configuration. Requires: both locks of the logger are held. All loggers get their new
// settings at the end, so that other threads meanwhile use the old ones; only the logger for errors gets its
// own immediately.
class Reconfiguration {
 public:
  explicit Reconfiguration(Properties& properties);

  void readLevels();
  void readFacilities();
  void readShowMore();
  void publish() FOKRAZO_REQUIRES(gNamedLoggersProtect());
  void readMemoryLevels() FOKRAZO_REQUIRES(gNamedLoggersProtect());
  void startMemoryLog(CircularBuffer& buffer, unsigned int ringSize);

 private:
  using Entry = std::pair<const std::string, std::string>;

  // Calls `apply` with the rest of the name and the entry, for every property with the prefix. If the rest is
  // empty, logs `complaint` instead, a format for the whole key.
  template <class Apply>
  void forEach(const std::string& prefix, const char* complaint, Apply apply);
  void set(const std::string& name, int LoggerSettings::*field, int value);
  // `value` is what the entry means, kInherit if it means nothing; `what` it should have been.
  void setUnlessIllegal(const std::string& name, int LoggerSettings::*field, int value, const Entry& entry,
                        const char* what);
  void readFacility(const std::string& program);
  int rootFacility(const std::string& key);

  Logger& root() FOKRAZO_REQUIRES(gNamedLoggersProtect()) { return *LoggerTree::root(); }

  Properties& m_properties;
  boost::shared_ptr<Logger> m_logger;  // for complaints
  LoggerSettings m_rootSettings;
  boost::unordered_map<std::string, LoggerSettings> m_settings;  // by logger
};

// The root keeps its facility unless a property sets another one.
Reconfiguration::Reconfiguration(Properties& properties)
    : m_properties(properties), m_logger(Logger::GetLogger(kLoggingLogger)) {
  m_rootSettings.facility = root().getEffectiveFacility();
  set(kLoggingLogger, &LoggerSettings::level, Logger::Warn);
  set(kLoggingLogger, &LoggerSettings::facility, TextToFacility(kDefaultFacility));
  LoggerTree::setMemoryLevel(*m_logger, Logger::Warn);
}

void Reconfiguration::set(const std::string& name, int LoggerSettings::*field, int value) {
  LoggerSettings& settings = m_settings[name];
  settings.*field = value;
  if (name == kLoggingLogger) LoggerTree::setSettings(*m_logger, settings);
}

void Reconfiguration::setUnlessIllegal(const std::string& name, int LoggerSettings::*field, int value,
                                       const Entry& entry, const char* what) {
  if (value != Logger::kInherit) return set(name, field, value);
  VESK_LOG(m_logger, Warn, "Illegal log %s. Property: '%s', value: '%s'", what, entry.first.c_str(),
           entry.second.c_str());
}

template <class Apply>
void Reconfiguration::forEach(const std::string& prefix, const char* complaint, Apply apply) {
  const std::unique_ptr<Properties::Map> entries(m_properties.getMap(prefix));
  if (!entries) return;
  for (const Entry& entry : *entries) {
    const std::string name = entry.first.substr(prefix.size());
    if (name.empty())
      VESK_LOG(m_logger, Warn, complaint, entry.first.c_str());
    else
      apply(name, entry);
  }
}

void Reconfiguration::readLevels() {
  const std::string text = m_properties.getString(PN::ROOT_LOGGER_NAME);
  m_rootSettings.level = TextToLevel(text);
  if (m_rootSettings.level == Logger::kInherit) {
    VESK_LOG(m_logger, Warn, "Illegal value for property 'log': '%s'. Using 'INFO'.", text.c_str());
    m_rootSettings.level = Logger::Info;
  }
  forEach(PN::ROOT_LOGGER_NAME + ".", "Illegal log name: '%s'",
          [this](const std::string& name, const Entry& entry) {
            setUnlessIllegal(name, &LoggerSettings::level, TextToLevel(entry.second), entry, "level");
          });
  set("client", &LoggerSettings::level, Logger::Trace);
}

// A program's own facility takes precedence over the general one.
void Reconfiguration::readFacilities() {
  readFacility("*");
  readFacility(programName());
}

void Reconfiguration::readFacility(const std::string& program) {
  const std::string prefix = PN::LOGGER_FACILITY + ".";
  const int facility = rootFacility(prefix + program);
  if (facility != Logger::kInherit) m_rootSettings.facility = facility;
  forEach(prefix, "Illegal facility name: '%s'", [this](const std::string& name, const Entry& entry) {
    setUnlessIllegal(name, &LoggerSettings::facility, TextToFacility(entry.second), entry, "facility");
  });
}

int Reconfiguration::rootFacility(const std::string& key) {
  const std::string value = m_properties.getString(key);
  if (value.empty()) return Logger::kInherit;
  const int facility = TextToFacility(value);
  if (facility != Logger::kInherit) return facility;
  VESK_LOG(m_logger, Warn, "Illegal value facility name: '%s' for '%s'. Using '%s'.", value.c_str(),
           key.c_str(), kDefaultFacility);
  return TextToFacility(kDefaultFacility);
}

void Reconfiguration::readShowMore() {
  const int bits = m_properties.getInt(PN::LOGGER_SHOW_MORE, 0);
  m_rootSettings.showMore = bits == Logger::kInherit ? 0 : bits;
  forEach(PN::LOGGER_SHOW_MORE + ".", "Illegal log name: '%s'",
          [this](const std::string& name, const Entry& entry) {
            const int own = entry.second.empty() ? Logger::kInherit : atoi(entry.second.c_str());
            set(name, &LoggerSettings::showMore, own);
          });
}

void Reconfiguration::publish() {
  for (const auto& entry : m_settings) Logger::GetLogger(entry.first);
  const LoggerTree::LevelChange change;
  LoggerTree::setSettings(root(), m_rootSettings);
  for (const auto& entry : LoggerTree::table()) {
    const auto own = m_settings.find(entry.first);
    LoggerTree::setSettings(*entry.second, own != m_settings.end() ? own->second : LoggerSettings());
  }
}

// A logger keeps its cached memory level unless a property names the logger.
void Reconfiguration::readMemoryLevels() {
  LoggerTree::setMemoryLevel(root(), memoryLevel(m_properties.getString(PN::ROOT_MEMORY_NAME), m_logger));
  forEach(PN::ROOT_MEMORY_NAME + ".", "Illegal log.memory name: '%s'",
          [](const std::string& name, const Entry& entry) {
            LoggerTree::setMemoryLevel(*Logger::GetLogger(name), TextToLevel(entry.second));
          });
}

void Reconfiguration::startMemoryLog(CircularBuffer& buffer, unsigned int ringSize) {
  if (!m_properties.getBool(PN::LOGGER_MEMORY_ENABLED, false)) return;
  buffer.init(m_logger, ringSize);
  if (buffer.isEnabled())
    VESK_LOG(m_logger, Warn, "circular buffer has been enabled\n");
  else
    VESK_LOG(m_logger, Warn, "circular buffer is not enabled\n");
}

}  // namespace

// Takes the locks in the same order as a thread that loads the configuration.
void Logger::ReconfigureLevels(Properties& properties) {
  const DestinationSettings destination = DestinationSettings::read();
  const unsigned int ringSize = CircularBuffer::configuredSize();
  HeldMessages held;
  Lock configuration(properties.mutex);
  Lock tree(gNamedLoggersProtect());
  Lock output(gLogMessageProtect());
  LoggerTree::init();
  if (LoggerTree::isShutDown()) return;
  HeldMessages::Scope hold(held);

  destination.report(destination.apply());
  Reconfiguration run(properties);
  run.readLevels();
  run.readFacilities();
  run.readShowMore();
  run.publish();
  const boost::shared_ptr<CircularBuffer>& buffer = gCircularBuffer();
  if (!buffer || !buffer->isActive()) return;
  run.readMemoryLevels();
  run.startMemoryLog(*buffer, ringSize);
}

bool Logger::ignoreProgram(const char* name) {
  const auto programs = Props(false, false)->getValueList(PN::LOGGER_PROGRAM_IGNORE, "");
  for (const std::string& program : *programs)
    if (program == name) return true;
  return false;
}

}  // namespace vesk
