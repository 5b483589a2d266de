/// Shared by the logger's source files. Internal.
///
/// Order of locks, outermost first: the configuration's, a work queue's, gNamedLoggersProtect,
/// gLogMessageProtect, the log file's, the one for syslog. So code that holds one of the loggers' locks must
/// not read the configuration or post to a queue. Only the last two are held while a line is written.
///
/// Everything here is created on first use and never destroyed: threads and static destructors may log until
/// the process ends.
#pragma once

#include <atomic>
#include <cerrno>
#include <cstdarg>
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

/// Guards the tree of loggers. Recursive: finding a logger creates its ancestors, and configuring logs.
Mutex& gNamedLoggersProtect();
/// Guards the destination, the background queue and the memory log. Recursive: code that holds it logs.
Mutex& gLogMessageProtect();
/// Whether a memory log was ever started; until then messages are not offered to it. Set by the sinks.
extern std::atomic<bool> gMemoryLogStarted;

/// The configuration of one logger.
struct LoggerSettings {
  int level = Logger::kInherit;
  int facility = Logger::kInherit;
  int showMore = Logger::kInherit;
};

/// The tree, for the logger's source files.
struct LoggerTree {
  /// Creates the root and the memory log once, unless logging has ended. Call it before the other operations.
  static void init() FOKRAZO_REQUIRES(gNamedLoggersProtect());
  static bool isShutDown();
  /// For the child of a fork, see inForkedChild.
  static void inChild(bool intact);
  static const boost::shared_ptr<Logger>& root() FOKRAZO_REQUIRES(gNamedLoggersProtect());
  static LoggerTable& table() FOKRAZO_REQUIRES(gNamedLoggersProtect());

  /// Logger::log, with the arguments in a list.
  static void log(Logger& logger, Logger::LogLevel level, const char* file, int line, const char* function,
                  const char* format, va_list args) __attribute__((format(printf, 6, 0)));

  static void setMemoryLevel(Logger& logger, int level);
  static void setSettings(Logger& logger, const LoggerSettings& settings);
  /// While it exists, isEnabled caches no levels.
  class LevelChange {
   public:
    LevelChange();
    ~LevelChange();
  };
};

/// BuildMessagePrefix without a lead; NUL-terminated. Valid until the thread's next call.
std::string_view timeAndProcess();

/// The syslog priority of a level, without facility.
int syslogPriority(Logger::LogLevel level);

/// __progname, or what detect_progname finds if that is empty.
const char* programName();

/// Restores `errno` after a log call, and counts nested log calls: an exception thrown within a log call logs
/// too.
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
  int& m_depth;  // the calling thread's; cached, because the lookup is slow
};

}  // namespace vesk
