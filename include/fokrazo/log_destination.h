/// The final destination of messages: the log file if one is open, else syslog.
#pragma once

#include <cstdarg>

#include <fokrazo/export.h>

namespace vesk {

/// Chooses the destination by `logger.destination`, at the first call and whenever `reopen` is set. If the
/// log file cannot be opened, the destination is syslog. Reads the configuration: callers must not hold a
/// lock that is taken after the configuration's. Thread-safe.
FOKRAZO_API void openLog(bool reopen);

/// Writes one message immediately, with control characters escaped. `priority` is facility and priority
/// together. Thread-safe.
FOKRAZO_API void FinalRendering(int priority, const char* format, va_list args)
    __attribute__((format(printf, 2, 0)));

}  // namespace vesk
