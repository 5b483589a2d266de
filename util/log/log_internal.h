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

#include <fokrazo/stringarray.h>
#include <fokrazo/file_logging.h>
#include <fokrazo/log.h>
#include <fokrazo/mutex.h>

namespace vesk {

class CircularBuffer;

using LoggerTable = boost::unordered_map<std::string, boost::shared_ptr<Logger>, murhash>;

constexpr char kLogSource[] = "util/log";
constexpr char kDefaultFacility[] = "auth";
constexpr char kLoggingLogger[] = "com.zantrel.logger";

/// Guards the tree of loggers. Recursive: finding a logger makes its ancestors, configuring logs.
Mutex& gNamedLoggersProtect();
/// Puts the output in one order; guards the background queue and the memory log. Recursive: who holds it
/// logs.
Mutex& gLogMessageProtect();
/// The process's log file.
FileLogging& gFileLogging();
/// The process's memory log; empty before the tree and after Logger::close. Guarded by gLogMessageProtect.
boost::shared_ptr<CircularBuffer>& gCircularBuffer();
/// Whether a memory log has ever been started: until then messages are not offered to it.
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

/// openLog(true) in two steps, for a caller that takes the logger's locks between them.
struct DestinationSettings {
  std::string destination;
  bool callOpenlog;
  FileLogging::Settings file;

  /// Reads the process's configuration. Requires: none of the logger's locks is held.
  static DestinationSettings read();
  /// Requires: gLogMessageProtect is held.
  void apply() const;
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

/// The memory log's level as a configuration has it; an illegal one gives INFO, and `logger` is told at WARN.
int memoryLevel(const std::string& text, const boost::shared_ptr<Logger>& logger);

/// Has the process's forks leave parent and child with a logger that works; to be called once.
void keepLoggingOverFork();
/// The background queue's part of it, in the child: the queue is the parent's.
void forgetQueueAfterFork();

}  // namespace vesk
