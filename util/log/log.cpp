#include <fokrazo/log.h>

#include <cstring>

#include <fokrazo/mutex.h>
#include <fokrazo/thread.h>
#include "util/hook/hooks.h"
#include "util/log/log_internal.h"
#include "util/thread/fork_locks.h"

namespace vesk {
namespace {

constexpr char kDiagPrefix[] = "diag.";
constexpr size_t kInitialBuckets = 11;

boost::shared_ptr<Logger>* gRootLogger FOKRAZO_GUARDED_BY(gNamedLoggersProtect()) = nullptr;
LoggerTable* gNamedLoggers FOKRAZO_GUARDED_BY(gNamedLoggersProtect()) = nullptr;
std::atomic<bool> gIsLogShutdown{false};

// "client" and its descendants do not show their names.
bool isHidden(const std::string& name) {
  return name == "client" || name.rfind("client.", 0) == 0;
}

std::string displayName(const std::string& fullName) {
  const size_t begin = fullName.rfind(kDiagPrefix, 0) == 0 ? strlen(kDiagPrefix) : 0;
  const std::string name(fullName, begin);
  if (isHidden(name)) return {};
  std::string shown;
  for (const char c : name) shown.append(c == '%' ? 2 : 1, c);
  return shown + ' ';
}

}  // namespace

// If another thread was changing the tree during a fork, the child starts again with only the root. Loggers
// already in use stay as they are. (Takes no lock: the child has no other thread.)
void LoggerTree::inChild(bool intact) FOKRAZO_NO_THREAD_SAFETY_ANALYSIS {
  if (Logger::m_levelGeneration % 2 != 0) ++Logger::m_levelGeneration;
  if (intact || gNamedLoggers == nullptr) return;
  const bool begins = gRootLogger == nullptr || isShutDown();
  gNamedLoggers = begins ? nullptr : new LoggerTable(kInitialBuckets);
}

Mutex& gNamedLoggersProtect() {
  inForkedChild(ForkOrder::Loggers, LoggerTree::inChild);
  return forkedLock(ForkOrder::Loggers);
}

Mutex& gLogMessageProtect() {
  return forkedLock(ForkOrder::LogMessages);
}

std::atomic<unsigned> Logger::m_levelGeneration{2};

Logger::Logger(const std::string& name, boost::shared_ptr<Logger> parent)
    : m_fullName(name), m_displayName(displayName(name)), m_parent(std::move(parent)) {}

bool LoggerTree::isShutDown() {
  return gIsLogShutdown.load(std::memory_order_relaxed);
}

const boost::shared_ptr<Logger>& LoggerTree::root() {
  return *gRootLogger;
}

LoggerTable& LoggerTree::table() {
  return *gNamedLoggers;
}

void LoggerTree::init() {
  if (isShutDown() || gNamedLoggers != nullptr) return;
  gNamedLoggers = new LoggerTable(kInitialBuckets);
  gRootLogger = new boost::shared_ptr<Logger>(new Logger("", nullptr));
  setSettings(*root(), {Logger::Info, TextToFacility(kDefaultFacility), 0});
  setMemoryLevel(*root(), Logger::Info);
  kHooks.openSinks();
}

void LoggerTree::setSettings(Logger& logger, const LoggerSettings& settings) {
  logger.m_configuredLevel = settings.level;
  logger.m_level = settings.level;
  logger.m_facility = settings.facility;
  logger.m_showMore = settings.showMore;
  Logger::m_levelGeneration += 2;
}

void LoggerTree::setMemoryLevel(Logger& logger, int level) {
  logger.m_memoryLevel = level;
  Logger::m_levelGeneration += 2;
}

LoggerTree::LevelChange::LevelChange() {
  ++Logger::m_levelGeneration;
}

LoggerTree::LevelChange::~LevelChange() {
  ++Logger::m_levelGeneration;
}

boost::shared_ptr<Logger> Logger::GetLogger(const std::string& name) {
  if (LoggerTree::isShutDown()) return {};
  Lock lock(gNamedLoggersProtect());
  LoggerTree::init();
  if (LoggerTree::isShutDown()) return {};
  if (name.empty()) return LoggerTree::root();
  LoggerTable& table = LoggerTree::table();
  const auto found = table.find(name);
  if (found != table.end()) return found->second;

  // All missing ancestors, from the root down.
  boost::shared_ptr<Logger> logger = LoggerTree::root();
  for (size_t end = name.find('.');; end = name.find('.', end + 1)) {
    const std::string ancestor = name.substr(0, end);
    if (!ancestor.empty()) {
      boost::shared_ptr<Logger>& entry = table[ancestor];
      if (!entry) entry.reset(new Logger(ancestor, logger));
      logger = entry;
    }
    if (end == std::string::npos) return logger;
  }
}

boost::shared_ptr<Logger> getLogger(const char* name, bool diag) {
  return Logger::GetThreadPrivateLogger(diag ? std::string(kDiagPrefix) + name : std::string(name));
}

void Logger::close() {
  Lock lock(gNamedLoggersProtect());
  gIsLogShutdown = true;
  delete gRootLogger;
  gRootLogger = nullptr;
  delete gNamedLoggers;
  gNamedLoggers = nullptr;
  kHooks.closeSinks();
}

int Logger::nearest(std::atomic<int> Logger::*field) const {
  const Logger* logger = this;
  int value;
  while ((value = (logger->*field).load(std::memory_order_relaxed)) == kInherit && logger->m_parent)
    logger = logger->m_parent.get();
  return value;
}

int Logger::getEffectiveLevel() const {
  return nearest(&Logger::m_configuredLevel);
}
int Logger::getEffectiveMemoryLevel() const {
  return nearest(&Logger::m_memoryLevel);
}
int Logger::getEffectiveFacility() const {
  return nearest(&Logger::m_facility);
}
int Logger::getShowMore() const {
  return nearest(&Logger::m_showMore);
}

bool Logger::isEnabledOrInherits(LogLevel level) {
  int own = m_level.load(std::memory_order_relaxed);
  if (own == kInherit) own = inheritLevel();
  if (level >= own) return true;
  int memory = m_memoryLevel.load(std::memory_order_relaxed);
  if (memory == kInherit) memory = inheritMemoryLevel();
  return level >= memory;
}

int Logger::inheritLevel() {
  const unsigned before = m_levelGeneration;
  const int level = getEffectiveLevel();
  int own = kInherit;
  if (before % 2 != 0 || !m_level.compare_exchange_strong(own, level)) return level;
  own = level;
  // A level has changed meanwhile: drop the levels cached here and at the call sites.
  if (m_levelGeneration != before && m_level.compare_exchange_strong(own, m_configuredLevel))
    m_levelGeneration += 2;
  return level;
}

int Logger::inheritMemoryLevel() {
  int own = kInherit;
  const int level = getEffectiveMemoryLevel();
  m_memoryLevel.compare_exchange_strong(own, level);
  return level;
}

}  // namespace vesk
