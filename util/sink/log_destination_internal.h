/// Opening the destination in steps. Internal.
#pragma once

#include <string>

#include <fokrazo/file_logging.h>
#include <fokrazo/log_destination.h>
#include "util/log/log_internal.h"

namespace vesk {

/// openLog(true) in three steps, for a caller that takes the logger's locks in between.
struct DestinationSettings {
  std::string destination;
  bool callOpenlog;
  FileLogging::Settings file;

  /// Reads the process's configuration. Requires: none of the logger's locks is held.
  static DestinationSettings read();
  /// Opens the destination. If a log file cannot be opened, syslog is used. Returns the errno of that, or 0.
  int apply() const FOKRAZO_REQUIRES(gLogMessageProtect());
  /// Logs that the log file could not be opened, for root alone, unless `error` is 0. Requires: none of the
  /// logger's locks is held, or messages are (HeldMessages).
  void report(int error) const;
};

}  // namespace vesk
