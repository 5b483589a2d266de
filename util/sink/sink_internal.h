/// What the sources of the sinks share. Internal. The order of locks stands in util/log/log_internal.h.
#pragma once

#include <cstdarg>
#include <string>

#include <boost/shared_ptr.hpp>

#include <fokrazo/file_logging.h>
#include <fokrazo/log.h>

namespace vesk {

class CircularBuffer;

/// The process's log file.
FileLogging& gFileLogging();
/// The process's memory log; empty before the tree and after Logger::close. Guarded by gLogMessageProtect.
boost::shared_ptr<CircularBuffer>& gCircularBuffer();

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

/// The memory log's level as a configuration has it; an illegal one gives INFO, and `logger` is told at WARN.
int memoryLevel(const std::string& text, const boost::shared_ptr<Logger>& logger);

/// Has the process's forks leave parent and child with a logger that works. Only the first call counts.
void keepLoggingOverFork();
/// The background queue's part of it, in the child: the queue is the parent's.
void forgetQueueAfterFork();

/// What the tree of loggers asks of the sinks; see Hooks.
void openSinks();
void closeSinks();
void writeToMemory(const char* format, va_list args) __attribute__((format(printf, 1, 0)));

}  // namespace vesk
