#include <fokrazo/log_destination.h>

#include <syslog.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <fokrazo/fixed_paths.h>
#include <fokrazo/properties.h>
#include <fokrazo/propnames.h>
#include "util/log/log_internal.h"
#include "util/sink/sink_internal.h"
#include "util/thread/fork_locks.h"

namespace vesk {
namespace {

std::atomic<bool> gOpened{false};
bool gSyslogOpened = false;  // guarded by gLogMessageProtect, as is the choice of the destination

constexpr char kSyslog[] = "syslog";

// syslog keeps the pointer.
void openSyslog() {
  static const char* const name = strdup(programName());
  openlog(name, LOG_PID, TextToFacility(kDefaultFacility));
  gSyslogOpened = true;
}

// What the file's cache still holds is written when the process ends.
void flushAtExit() {
  static const bool registered = atexit([] { gFileLogging().flushFromNowOn(); }) == 0;
  (void)registered;
}

// Reading the configuration may log, and that opens the log.
thread_local int gReadersInThread = 0;
struct Reader {
  Reader() { ++gReadersInThread; }
  ~Reader() { --gReadersInThread; }
};

}  // namespace

FileLogging& gFileLogging() {
  keepLocksOverFork();
  static FileLogging& file = *new FileLogging;
  [[maybe_unused]] static Mutex& held = heldOverFork(ForkOrder::LogFile, file.mutex);
  return file;
}

DestinationSettings DestinationSettings::read() {
  Properties& properties = *Props(false, false);
  DestinationSettings settings;
  settings.destination = properties.getString(PN::LOGGER_DESTINATION);
  if (settings.destination.empty()) settings.destination = kSyslog;
  if (settings.destination == "file") settings.destination = paths::kLogFile;
  settings.callOpenlog = properties.getBool(PN::LOGGER_OPENLOG + "." + programName(), true);
  settings.file = FileLogging::Settings::read();
  return settings;
}

void DestinationSettings::apply() const {
  gOpened = true;
  int error = 0;
  if (destination == kSyslog) {
    gFileLogging().close();
  } else {
    error = gFileLogging().init(destination.c_str(), file);
    if (error == 0) return flushAtExit();
  }
  Lock lock(gFileLogging().mutex);
  if (!gSyslogOpened && callOpenlog) openSyslog();
  if (geteuid() == 0 && error != 0) {
    errno = error;
    syslog(LOG_ERR, "Could not open %s: %m", destination.c_str());
  }
}

void openLog(bool reopen) {
  constexpr int kDeepestReader = 2;
  if ((gOpened && !reopen) || gReadersInThread >= kDeepestReader) return;
  Reader reader;
  const DestinationSettings settings = DestinationSettings::read();
  Lock lock(gLogMessageProtect());
  if (!gOpened || reopen) settings.apply();
}

// The file's lock is held over syslog too, so that the system's own lock is free when the process forks.
void FinalRendering(int priority, const char* format, va_list args) {
  openLog(false);
  if (gFileLogging().logIfOpened(format, args)) return;
  char text[512];
  if (vsnprintf(text, sizeof text, format, args) < 0) return;
  Lock lock(gFileLogging().mutex);
  syslog(priority, "%s", text);
}

}  // namespace vesk
