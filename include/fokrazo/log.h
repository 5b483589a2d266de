/// The logger: one process-wide tree of named loggers. A setting that a logger does not have itself it takes
/// from its nearest ancestor; the root has the empty name. Logging never reports a failure to its caller.
/// Each sink escapes control characters and the like in the finished message, so that any text may be logged.
///
/// A component logs like this; a disabled message costs two comparisons and evaluates none of its arguments:
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

/// One named logger. Instances exist only in boost::shared_ptr, and stay valid after Logger::close.
/// Thread-safety: every operation may be called from any thread. Fork: parent and child both go on logging.
class FOKRAZO_API Logger {
 public:
  /// The severity of a message, lowest first.
  enum LogLevel : int { Trace = 0, Debug, Diag, Info, Warn, Error, Fatal, Disabled };
  /// A setting that is taken from the parent.
  static constexpr int kInherit = -1;
  /// Bits of `showMore`: what a message shows of its source position.
  enum ShowMore : int { ShowFile = 1, ShowLine = 2, ShowFunction = 4 };

  /// The logger of that dotted name, made if need be, with its missing ancestors. Empty after close().
  static boost::shared_ptr<Logger> GetLogger(const std::string& name);
  /// As GetLogger, but through a table of the calling thread: no global lock once the thread knows the name.
  static boost::shared_ptr<Logger> GetThreadPrivateLogger(const std::string& name);

  /// Whether a message of that level goes anywhere. Remembers inherited levels in the logger's own fields.
  bool isEnabled(LogLevel level) {
    // kInherit is below every level.
    return (level >= m_level.load(std::memory_order_relaxed) ||
            level >= m_memoryLevel.load(std::memory_order_relaxed)) &&
           isEnabledOrInherits(level);
  }

  /// A number that changes whenever the level of any logger may have changed.
  static unsigned levelGeneration() { return m_levelGeneration.load(std::memory_order_acquire); }

  /// Writes a message (printf). Prefix and format together are cut at 511 characters, and each sink has a
  /// limit of its own for the finished message. `file` and `function` may be null or empty.
  void log(LogLevel level, const char* file, int line, const char* function, const char* format, ...)
      FOKRAZO_PRINTF(6, 7);
  /// As log, followed by ": " and the system's text for `errnum`. Never goes to the memory log.
  void logSysErr(LogLevel level, int errnum, const char* file, int line, const char* function,
                 const char* format, ...) FOKRAZO_PRINTF(7, 8);
  /// Logs `caption` and then a hexadecimal dump, sixteen bytes a row.
  void hexData(LogLevel level, const char* caption, const unsigned char* data, unsigned int length);

  /// The logger's own setting, or that of its nearest ancestor that has one.
  int getEffectiveLevel() const;
  int getEffectiveMemoryLevel() const;
  int getEffectiveFacility() const;
  int getShowMore() const;

  /// Applies the configuration to the tree; complaints go to "com.zantrel.logger" at WARN.
  static void ReconfigureLevels(Properties& properties);
  /// Whether `name` is one of the programs in the list `logger.program.ignore`; case counts.
  bool ignoreProgram(const char* name);
  /// Sets the name that messages of the calling thread show; null clears it. Returns the name it had.
  static std::string SetThreadName(const char* name);
  /// Ends logging for good: from here on GetLogger returns empty pointers.
  static void close();

  /// Start and stop the background thread that writes what is logged. They report to `logger`, which may be
  /// empty. stopThread writes out what is queued before it returns.
  static void startThread(boost::shared_ptr<Logger> logger);
  static void stopThread(boost::shared_ptr<Logger> logger);

  /// Allows or forbids the memory log in this process. Where it is allowed the configuration decides whether
  /// it runs; one that runs already is not stopped.
  static void SetBufferActive(bool active);
  /// Sets the memory log's level and, with `enable`, starts it.
  static void ReconfigureBuffer(bool enable, std::string level);

  Logger(const Logger&) = delete;
  Logger& operator=(const Logger&) = delete;

 private:
  friend struct LoggerTree;

  Logger(const std::string& name, boost::shared_ptr<Logger> parent);

  // The rest of isEnabled, for a message that one of the logger's own fields does not rule out.
  bool isEnabledOrInherits(LogLevel level);
  // Look for the level among the ancestors and remember it.
  int inheritLevel();
  int inheritMemoryLevel();
  void appendPrefix(CharAccumulator<512>& text, LogLevel level, const char* file, int line,
                    const char* function) const;
  int nearest(std::atomic<int> Logger::*field) const;

  std::string m_fullName;
  std::string m_displayName;  // as it appears in a message's format: with "%" doubled, and a blank at the end
  boost::shared_ptr<Logger> m_parent;  // empty in the root alone
  std::atomic<int> m_level{kInherit};  // what isEnabled found, until the next configuration
  std::atomic<int> m_configuredLevel{kInherit};
  std::atomic<int> m_memoryLevel{kInherit};  // as configured, or what isEnabled found
  std::atomic<int> m_facility{kInherit};
  std::atomic<int> m_showMore{kInherit};

  static std::atomic<unsigned> m_levelGeneration;  // odd while the levels are being changed

  // The per-thread table of loggers.
  static pthread_key_t g_LoggerTableKey;
  static pthread_once_t g_LoggerTableKeyOnce;
  static void MakeLoggerTableKey();
};

/// The logger of `name`, with "diag." in front if `diag`; empty after Logger::close. Takes no lock once the
/// thread knows the name.
FOKRAZO_API boost::shared_ptr<Logger> getLogger(const char* name, bool diag);

/// The name of a level, "" for a number above 7. Constant storage.
FOKRAZO_API const char* LevelToText(Logger::LogLevel level);
/// The level of a name (case-sensitive): -1 for an unknown one, INFO for the empty text.
FOKRAZO_API int TextToLevel(const std::string& text);
/// The syslog facility of a name in any case, already shifted as syslog wants it; -1 for an unknown one.
FOKRAZO_API int TextToFacility(const std::string& text);
/// The calling thread's name, null if it has none. Owned by the thread.
FOKRAZO_API const char* GetThreadName();
/// Makes the prefix of a line that does not go to syslog: `lead`, local time, host, program and process.
/// Returns the length that was wanted, at most `size`.
FOKRAZO_API int BuildMessagePrefix(char* buffer, int size, const char* lead);
/// Sends a finished format with its arguments to the destination, through the background queue if there is
/// one.
FOKRAZO_API void WriteMessage(int facility, Logger::LogLevel level, CharAccumulator<512>& format,
                              va_list args);

}  // namespace vesk

/// Logs to a pointer to a logger, which may be empty; `level` is an enumerator of Logger without the class.
#define VESK_LOG(logger, level, ...)                                                      \
  do {                                                                                    \
    const auto& veskLogger_ = (logger);                                                   \
    if (veskLogger_ && veskLogger_->isEnabled(::vesk::Logger::level))                     \
      veskLogger_->log(::vesk::Logger::level, __FILE__, __LINE__, __func__, __VA_ARGS__); \
  } while (false)
/// Logs to the logger of that name, which is a constant; for a name made at run time there is VESK_LOG. A
/// place that has found its message disabled looks the logger up again only after a level has changed.
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
/// As VESK_LOG, with ": " and the system's text for `errnum` after the message.
#define VESK_LOG_SYSERR(logger, level, errnum, ...)                                                     \
  do {                                                                                                  \
    const auto& veskLogger_ = (logger);                                                                 \
    if (veskLogger_ && veskLogger_->isEnabled(::vesk::Logger::level))                                   \
      veskLogger_->logSysErr(::vesk::Logger::level, errnum, __FILE__, __LINE__, __func__, __VA_ARGS__); \
  } while (false)
