/// The log file: written through a cache, rotated by size, old files perhaps compressed.
#pragma once

#include <cstdarg>
#include <cstdio>
#include <memory>
#include <string>

#include <fokrazo/export.h>
#include <fokrazo/mutex.h>

namespace vesk {

class LogCache;

/// One log file. Several processes may write the same one: it is opened for appending, is readable and
/// writable by everybody, and a rotation by another process is noticed at the next full size.
/// Opening never waits and never follows a stranger's trap: what is neither a regular file nor a character
/// device (a FIFO) is refused, and a symbolic link must belong to root or to the effective user.
/// Failures of writing and of rotation are not reported.
/// Thread-safety: every operation may be called from any thread, except where a held lock is required.
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
    int maxCount = 5;                   // old files kept; below 1 the file goes on growing
    bool zipBackup = false;             // old files are compressed
    int flushFrequency = 10;            // messages between flushes
    unsigned int cacheSize = 10240;     // bytes; 0 for no cache

    /// As the process's configuration has them.
    static Settings read();
  };

  /// Opens the file with the configured settings, or with those given. 0 or an errno.
  int init(const char* path);
  int init(const char* path, const Settings& settings);
  /// Opens the file if it is closed or `force` is set.
  void open(bool force);
  /// Writes out what is left, and closes the file.
  void close();
  /// Closes the file and gives the cache back.
  void destroy();
  /// Whether lines go to the file.
  bool isOpened();

  /// Writes one line: time, host, program and process, then the text. With a cache the text is cut at 1023
  /// characters.
  void log(const char* format, va_list args) __attribute__((format(printf, 2, 0)));
  /// As log if the file is open; false, with `args` unused, if it is not.
  bool logIfOpened(const char* format, va_list args) __attribute__((format(printf, 2, 0)));
  /// Writes out what the cache holds; from now on every line is written at once. For the process's end.
  void flushFromNowOn();
  /// Forgets what the cache holds, in a child process whose parent writes it. Requires: no other thread.
  void forgetAfterFork();

  /// The rest requires that `mutex` is held.
  int openLog(bool force);
  /// As close.
  void closeLog();
  /// Moves the file out of the way and opens a new one, if it is too large. Where none can be opened the old
  /// one is written on until the next time.
  void fileRotate();
  /// Whether the open file, or the one that the path names, has reached the size; false if it cannot be told.
  bool checkFileSizeByFP();
  bool checkFileSizeByPath();

  /// Held over every operation; recursive.
  Mutex mutex;

 private:
  void makeCache();
  void logLocked(const char* format, va_list args) __attribute__((format(printf, 2, 0)));
  bool writeLine(bool flushDue, const char* format, va_list args) __attribute__((format(printf, 3, 0)));
  void printLine(const char* prefix, const char* format, va_list args) __attribute__((format(printf, 3, 0)));
  template <class Write>
  bool writeForGood(Write write);
  void flushCache();
  void forgetCache();
  int openFile();
  void closeFile();
  bool isFarTooLarge(int file) const;
  bool isRemoved() const;

  FILE* m_file = nullptr;
  std::string m_path;
  Settings m_settings;
  int m_unflushed = 0;  // messages since the last flush
  std::unique_ptr<LogCache> m_cache;
  std::unique_ptr<char[]> m_streamBuffer;  // of m_file, where there is no cache
};

}  // namespace vesk
