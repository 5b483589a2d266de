/// Where messages end up: the log file if one is open, else syslog.
#pragma once

#include <cstdarg>

#include <fokrazo/export.h>

namespace vesk {

/// Chooses the destination by `logger.destination`, once; `reopen` chooses again. A log file that cannot be
/// opened falls back on syslog. Reads the configuration, so that its callers hold no lock that is taken under
/// the configuration's own. Thread-safe.
FOKRAZO_API void openLog(bool reopen);

/// Writes one message, at once. `priority` is facility and priority together. Thread-safe.
FOKRAZO_API void FinalRendering(int priority, const char* format, va_list args)
    __attribute__((format(printf, 2, 0)));

}  // namespace vesk
