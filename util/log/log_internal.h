/// What the sources of the logger share. Internal.
///
/// Order of locks, outermost first: the configuration's, a work queue's, gNamedLoggersProtect,
/// gLogMessageProtect, the log file's. So nobody reads the configuration or posts to a queue with one of the
/// loggers' locks in hand.
/// Everything here is made on first use and never destroyed: other threads and static destructors may log to
/// the very end of the process.
#pragma once

#include <atomic>
#include <cerrno>
#include <string>
#include <string_view>

#include <boost/shared_ptr.hpp>
#include <boost/unordered_map.hpp>

#include <fokrazo/log.h>
#include <fokrazo/murhash.h>
#include <fokrazo/mutex.h>

namespace vesk {

using LoggerTable = boost::unordered_map<std::string, boost::shared_ptr<Logger>, murhash>;

constexpr char kLogSource[] = "util/log";
constexpr char kDefaultFacility[] = "auth";
constexpr char kLoggingLogger[] = "com.zantrel.logger";

/// Guards the tree of loggers. Recursive: finding a logger makes its ancestors, configuring logs.
Mutex& gNamedLoggersProtect();
/// Puts the output in one order; guards the background queue and the memory log. Recursive: who holds it
/// logs.
Mutex& gLogMessageProtect();
/// Whether a memory log has ever been started: until then messages are not offered to it. Set by the sinks.
extern std::atomic<bool> gMemoryLogStarted;

/// What a configuration says of one logger.
struct LoggerSettings {
  int level = Logger::kInherit;
  int facility = Logger::kInherit;
  int showMore = Logger::kInherit;
};

/// The tree from the inside.
struct LoggerTree {
  /// Makes the root and the memory log, once, unless logging has ended. The other operations require this
  /// and gNamedLoggersProtect.
  static void init();
  static bool isShutDown();
  /// For the child of a fork, see inForkedChild.
  static void inChild(bool intact);
  static const boost::shared_ptr<Logger>& root();
  static LoggerTable& table();

  static void setMemoryLevel(Logger& logger, int level);
  static void setSettings(Logger& logger, const LoggerSettings& settings);
  /// While one stands levels are changed: isEnabled remembers none that may be out of date.
  class LevelChange {
   public:
    LevelChange();
    ~LevelChange();
  };
};

/// What BuildMessagePrefix writes without a lead; a 0 stands behind it. Good until the thread asks again.
std::string_view whenAndWho();

/// The syslog priority of a level, without facility.
int syslogPriority(Logger::LogLevel level);

/// __progname, found by other means if it is empty.
const char* programName();

/// Keeps `errno` as it was over a log call, and tells when log calls have come to nest too deeply: an
/// exception thrown within a log call logs too.
class LogCall {
 public:
  LogCall() : m_errno(errno), m_depth(depth) { ++m_depth; }
  ~LogCall() {
    --m_depth;
    errno = m_errno;
  }
  LogCall(const LogCall&) = delete;
  LogCall& operator=(const LogCall&) = delete;

  bool isTooDeep() const { return m_depth > kDeepest; }

 private:
  static constexpr int kDeepest = 7;
  static thread_local int depth;

  int m_errno;
  int& m_depth;  // the calling thread's; finding it costs more than using it
};

}  // namespace vesk
