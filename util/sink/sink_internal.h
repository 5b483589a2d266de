/// Shared by the sinks' source files. Internal. util/log/log_internal.h has the order of their locks.
#pragma once

#include <cstdarg>
#include <string>

#include <boost/shared_ptr.hpp>

#include <fokrazo/file_logging.h>
#include <fokrazo/log.h>
#include "util/log/log_internal.h"

namespace vesk {

class CircularBuffer;

/// The process's log file.
FileLogging& gFileLogging();
/// The process's memory log; empty before the tree is created and after Logger::close.
boost::shared_ptr<CircularBuffer>& gCircularBuffer() FOKRAZO_REQUIRES(gLogMessageProtect());

/// openLog(true) in two steps, for callers that take the logger's locks in between.
struct DestinationSettings {
  std::string destination;
  bool callOpenlog;
  FileLogging::Settings file;

  /// Reads the process's configuration. Requires: none of the logger's locks is held.
  static DestinationSettings read();
  /// Opens the destination. If the log file cannot be opened, uses syslog and, as root, holds a message about
  /// it. Requires: a HeldMessages::Scope.
  void apply() const FOKRAZO_REQUIRES(gLogMessageProtect());
};

/// The configured level of the memory log. An invalid one counts as INFO, with a warning to `logger`.
int memoryLevel(const std::string& text, const boost::shared_ptr<Logger>& logger);

/// For the child of a fork: leaves the background queue to the parent.
void forgetQueueAfterFork();

/// Called by the tree of loggers; see Hooks.
void openSinks();
void closeSinks();
void writeToMemory(const char* format, va_list args) __attribute__((format(printf, 1, 0)));

}  // namespace vesk
