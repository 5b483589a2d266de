/// The logger: one process-wide tree of named loggers. A logger inherits the settings that it lacks from its
/// nearest ancestor; the root's name is empty. Logging never reports a failure to its caller. Each sink
/// escapes control characters in the finished message, so any text may be logged.
///
/// A component logs like this; a disabled message costs two comparisons and does not evaluate its arguments:
///   boost::shared_ptr<Logger> logger = getLogger("lrpc.session", false);
///   VESK_LOG(logger, Debug, "New socket %ld", socket);
#pragma once

#include <pthread.h>

#include <atomic>
#include <cstdarg>
#include <string>

#include <boost/shared_ptr.hpp>

#include <fokrazo/export.h>

namespace vesk {

class Properties;
template <unsigned Size>
class CharAccumulator;

/// One named logger. Always held by boost::shared_ptr; stays valid after Logger::close. Thread-safe. Fork:
/// parent and child both continue to log.
class FOKRAZO_API Logger {
 public:
  /// The severity of a message, lowest first.
  enum LogLevel : int { Trace = 0, Debug, Diag, Info, Warn, Error, Fatal, Disabled };
  /// The value of a setting that is inherited from the parent.
  static constexpr int kInherit = -1;
  /// Bits of `showMore`: what a message shows of its source position.
  enum ShowMore : int { ShowFile = 1, ShowLine = 2, ShowFunction = 4 };

  /// The logger of that dotted name; created if missing, with its missing ancestors. Empty after close().
  static boost::shared_ptr<Logger> GetLogger(const std::string& name);
  /// As GetLogger, but through a table of the calling thread: no global lock once the thread knows the name.
  static boost::shared_ptr<Logger> GetThreadPrivateLogger(const std::string& name);

  /// Whether a message of that level goes anywhere. Caches inherited levels.
  bool isEnabled(LogLevel level) {
    // kInherit is below every level.
    return (level >= m_level.load(std::memory_order_relaxed) ||
            level >= m_memoryLevel.load(std::memory_order_relaxed)) &&
           isEnabledOrInherits(level);
  }

  /// A number that changes whenever the level of any logger may have changed.
  static unsigned levelGeneration() { return m_levelGeneration.load(std::memory_order_acquire); }

  /// Writes a message (printf). Prefix and format together are cut at 511 characters; each sink also limits
  /// the finished message. `file` and `function` may be null or empty.
  void log(LogLevel level, const char* file, int line, const char* function, const char* format, ...)
      FOKRAZO_PRINTF(6, 7);
  /// As log, followed by ": " and the system's text for `errnum`. Never goes to the memory log.
  void logSysErr(LogLevel level, int errnum, const char* file, int line, const char* function,
                 const char* format, ...) FOKRAZO_PRINTF(7, 8);
  /// Logs `caption` and then a hexadecimal dump, sixteen bytes a row.
  void hexData(LogLevel level, const char* caption, const unsigned char* data, unsigned int length);

  /// The logger's own setting, or that of the nearest ancestor that has one.
  int getEffectiveLevel() const;
  int getEffectiveMemoryLevel() const;
  int getEffectiveFacility() const;
  int getShowMore() const;

  /// Applies the configuration to the tree; bad values are logged to "com.zantrel.logger" at WARN.
  static void ReconfigureLevels(Properties& properties);
  /// Whether the list `logger.program.ignore` contains the program `name`; case-sensitive.
  bool ignoreProgram(const char* name);
  /// Sets the calling thread's name in messages; null clears it. Returns the previous name.
  static std::string SetThreadName(const char* name);
  /// Ends logging for good: from now on GetLogger returns empty pointers.
  static void close();

  /// Start and stop the background thread that writes messages. They report to `logger`, which may be empty.
  /// stopThread writes out the queue before it returns.
  static void startThread(boost::shared_ptr<Logger> logger);
  static void stopThread(boost::shared_ptr<Logger> logger);

  /// Allows or forbids the memory log in this process. If it is allowed, the configuration decides whether it
  /// runs. One that is already running is not stopped.
  static void SetBufferActive(bool active);
  /// Sets the memory log's level and, with `enable`, starts it.
  static void ReconfigureBuffer(bool enable, std::string level);

  Logger(const Logger&) = delete;
  Logger& operator=(const Logger&) = delete;

 private:
  friend struct LoggerTree;

  Logger(const std::string& name, boost::shared_ptr<Logger> parent);

  // The rest of isEnabled, after the logger's own fields have not ruled the message out.
  bool isEnabledOrInherits(LogLevel level);
  // Take the level from the ancestors and cache it.
  int inheritLevel();
  int inheritMemoryLevel();
  void appendPrefix(CharAccumulator<512>& text, LogLevel level, const char* file, int line,
                    const char* function) const;
  int nearest(std::atomic<int> Logger::*field) const;

  std::string m_fullName;
  std::string m_displayName;           // as used in formats: with "%" doubled, and a trailing blank
  boost::shared_ptr<Logger> m_parent;  // empty only in the root
  std::atomic<int> m_level{kInherit};  // cached by isEnabled until the next configuration
  std::atomic<int> m_configuredLevel{kInherit};
  std::atomic<int> m_memoryLevel{kInherit};  // as configured, or cached by isEnabled
  std::atomic<int> m_facility{kInherit};
  std::atomic<int> m_showMore{kInherit};

  static std::atomic<unsigned> m_levelGeneration;  // odd while the levels are being changed

  // The per-thread table of loggers.
  static pthread_key_t g_LoggerTableKey;
  static pthread_once_t g_LoggerTableKeyOnce;
  static void MakeLoggerTableKey();
};

/// The logger of `name`, or of "diag." + `name` if `diag`; empty after Logger::close. Takes no lock once the
/// thread knows the name.
FOKRAZO_API boost::shared_ptr<Logger> getLogger(const char* name, bool diag);

/// The name of a level; "" for a number above 7. Constant storage.
FOKRAZO_API const char* LevelToText(Logger::LogLevel level);
/// The level of a name (case-sensitive): -1 for an unknown one, INFO for the empty text.
FOKRAZO_API int TextToLevel(const std::string& text);
/// The syslog facility of a name in any case, shifted as syslog expects it; -1 for an unknown one.
FOKRAZO_API int TextToFacility(const std::string& text);
/// The calling thread's name, null if it has none. Owned by the thread.
FOKRAZO_API const char* GetThreadName();
/// Builds the prefix of a line that does not go to syslog: `lead`, local time, host, program and process.
/// Returns the length of the whole prefix, at most `size`.
FOKRAZO_API int BuildMessagePrefix(char* buffer, int size, const char* lead);
/// Sends a finished format with its arguments to the destination, through the background queue if there is
/// one.
FOKRAZO_API void WriteMessage(int facility, Logger::LogLevel level, CharAccumulator<512>& format,
                              va_list args);

}  // namespace vesk

/// Logs to `logger`, a pointer that may be empty; `level` is an unqualified Logger::LogLevel.
#define VESK_LOG(logger, level, ...)                                                      \
  do {                                                                                    \
    const auto& veskLogger_ = (logger);                                                   \
    if (veskLogger_ && veskLogger_->isEnabled(::vesk::Logger::level))                     \
      veskLogger_->log(::vesk::Logger::level, __FILE__, __LINE__, __func__, __VA_ARGS__); \
  } while (false)
/// Logs to the logger of that name, which must be a constant; otherwise use VESK_LOG. Where a message was
/// disabled, the logger is looked up again only after a level has changed.
#define VESK_LOG_TO(name, level, ...)                                                     \
  do {                                                                                    \
    static constexpr const char* veskName_ = name;                                        \
    static std::atomic<unsigned> veskDisabledIn_{0};                                      \
    const unsigned veskLevels_ = ::vesk::Logger::levelGeneration();                       \
    if (veskDisabledIn_.load(std::memory_order_relaxed) == veskLevels_) break;            \
    const auto veskLogger_ = ::vesk::Logger::GetThreadPrivateLogger(veskName_);           \
    if (veskLogger_ && veskLogger_->isEnabled(::vesk::Logger::level))                     \
      veskLogger_->log(::vesk::Logger::level, __FILE__, __LINE__, __func__, __VA_ARGS__); \
    else                                                                                  \
      veskDisabledIn_.store(veskLevels_, std::memory_order_relaxed);                      \
  } while (false)
/// As VESK_LOG, followed by ": " and the system's text for `errnum`.
#define VESK_LOG_SYSERR(logger, level, errnum, ...)                                                     \
  do {                                                                                                  \
    const auto& veskLogger_ = (logger);                                                                 \
    if (veskLogger_ && veskLogger_->isEnabled(::vesk::Logger::level))                                   \
      veskLogger_->logSysErr(::vesk::Logger::level, errnum, __FILE__, __LINE__, __func__, __VA_ARGS__); \
  } while (false)
