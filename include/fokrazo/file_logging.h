/// The log file: written through a cache, rotated by size; old files can be compressed.
#pragma once

#include <cstdarg>
#include <cstdio>
#include <memory>
#include <string>

#include <fokrazo/export.h>
#include <fokrazo/mutex.h>

namespace vesk {

class LogBackups;
class LogCache;

/// One log file. Several processes may write the same one: it is opened for appending, every user may read
/// and write it, and a process notices another's rotation once the file has reached its full size again.
/// Opening never blocks, and another user cannot redirect it: a symbolic link must belong to root or to the
/// effective user, a file with a second hard link is refused (EMLINK), and so is anything but a regular file
/// or a character device (ENXIO). A pipe or FIFO is accepted if a link that root owns leads to it, as
/// /dev/stdout does in a container; it has no cache, and what it does not accept within 100 ms goes to
/// syslog. While writing to a file fails, as on a full disk, lines are lost: syslog gets one message about
/// that, and one when writing works again. Rotation errors are not reported. Thread-safe; some operations
/// require the lock to be held.
class FOKRAZO_API FileLogging {
 public:
  /// A closed log.
  FileLogging();
  /// As init.
  explicit FileLogging(const char* path);
  virtual ~FileLogging();
  FileLogging(const FileLogging&) = delete;
  FileLogging& operator=(const FileLogging&) = delete;

  /// The keys `logger.file.…`.
  struct Settings {
    unsigned int maxSize = 0x20000000;  // bytes; the size at which the file is rotated
    int maxCount = 5;                   // old files kept; below 1 the file is never rotated
    bool zipBackup = false;             // whether old files are compressed
    int flushFrequency = 10;            // messages between flushes
    unsigned int cacheSize = 10240;     // bytes; 0 for no cache

    /// Reads them from the process's configuration.
    static Settings read();
  };

  /// Opens the file, with the configured settings or with these. Returns 0 or an errno; after an error the
  /// log is closed.
  int init(const char* path);
  int init(const char* path, const Settings& settings);
  /// Opens the file if it is closed or `force` is set.
  void open(bool force);
  /// Writes out the cache and closes the file.
  void close();
  /// Closes the file and frees the cache.
  void destroy();
  /// Whether lines go to the file.
  bool isOpened();

  /// Writes one line: time, host, program and process, then the text, with control characters escaped. With a
  /// cache the text is cut at 1023 characters. Old files are compressed after `mutex` has been released.
  void log(const char* format, va_list args) __attribute__((format(printf, 2, 0)));
  /// As log. Returns false, with `args` unused, if the file is closed, or was removed and cannot be created
  /// again; lines still cached for a removed file then go to syslog.
  bool logIfOpened(const char* format, va_list args) __attribute__((format(printf, 2, 0)));
  /// Writes out the cache; from now on every line is written immediately. For the end of the process.
  void flushFromNowOn();
  /// Discards the cache in a child process, because the parent writes it. Requires: no other thread.
  void forgetAfterFork();

  /// As open; 0 or an errno.
  int openLog(bool force) FOKRAZO_REQUIRES(mutex);
  /// As close.
  void closeLog() FOKRAZO_REQUIRES(mutex);
  /// Renames the file if it is too large, opens a new one, and compresses the old one if configured. If no
  /// new file can be opened, keeps writing to the old one.
  void fileRotate() FOKRAZO_REQUIRES(mutex);
  /// Whether the open file, or the file at the path, has reached the maximum size; false if its size is
  /// unknown.
  bool checkFileSizeByFP() FOKRAZO_REQUIRES(mutex);
  bool checkFileSizeByPath() FOKRAZO_REQUIRES(mutex);

  /// Held during every operation; recursive, because a caller that holds it may log.
  Mutex mutex;

 private:
  class Line;
  struct Afterwards;

  void makeCache() FOKRAZO_REQUIRES(mutex);
  bool logLocked(const char* format, va_list args, Afterwards& afterwards) FOKRAZO_REQUIRES(mutex)
      __attribute__((format(printf, 2, 0)));
  bool isFlushDue() FOKRAZO_REQUIRES(mutex);
  bool writeLine(bool flushDue, const char* format, va_list args) FOKRAZO_REQUIRES(mutex)
      __attribute__((format(printf, 3, 0)));
  void printLine(const Line& line) FOKRAZO_REQUIRES(mutex);
  template <class Write>
  bool writeForGood(Write write) FOKRAZO_REQUIRES(mutex);
  __attribute__((visibility("hidden"))) void noteFailedWrite(int error) FOKRAZO_REQUIRES(mutex);
  __attribute__((visibility("hidden"))) std::string takeNotice() FOKRAZO_REQUIRES(mutex);
  bool flushCache() FOKRAZO_REQUIRES(mutex);
  void forgetCache() FOKRAZO_REQUIRES(mutex);
  std::string takeUnwritten() FOKRAZO_REQUIRES(mutex);
  int openFile() FOKRAZO_REQUIRES(mutex);
  void closeFile() FOKRAZO_REQUIRES(mutex);
  std::unique_ptr<LogBackups> rotate() FOKRAZO_REQUIRES(mutex);
  bool isFarTooLarge(int file) const FOKRAZO_REQUIRES(mutex);
  bool isRemoved() const FOKRAZO_REQUIRES(mutex);

  FILE* m_file FOKRAZO_GUARDED_BY(mutex) = nullptr;
  std::string m_path FOKRAZO_GUARDED_BY(mutex);
  Settings m_settings FOKRAZO_GUARDED_BY(mutex);
  unsigned int m_unflushed : 29 FOKRAZO_GUARDED_BY(mutex);  // messages since the last flush
  bool m_isPipe : 1 FOKRAZO_GUARDED_BY(mutex);
  bool m_isGone : 1 FOKRAZO_GUARDED_BY(mutex);  // the file was removed, and cannot be created again
  bool m_isFailureReported : 1 FOKRAZO_GUARDED_BY(mutex);  // syslog was told that writing fails
  std::unique_ptr<LogCache> m_cache FOKRAZO_GUARDED_BY(mutex);
  std::unique_ptr<char[]> m_streamBuffer FOKRAZO_GUARDED_BY(mutex);  // of m_file, if there is no cache
  int m_writeError FOKRAZO_GUARDED_BY(mutex) = 0;  // errno of the last write, 0 if it worked
};

}  // namespace vesk
