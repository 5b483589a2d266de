#include <fokrazo/log_destination.h>

#include <syslog.h>
#include <unistd.h>

#include <atomic>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

#include <fokrazo/char_accumulator.h>
#include <fokrazo/fixed_paths.h>
#include <fokrazo/properties.h>
#include <fokrazo/propnames.h>
#include "util/log/log_internal.h"
#include "util/sink/log_destination_internal.h"
#include "util/sink/log_text.h"
#include "util/sink/syslog_line.h"
#include "util/text/made_once.h"
#include "util/thread/fork_locks.h"

namespace vesk {
namespace {

std::atomic<bool> gOpened{false};
std::atomic<bool> gFlushesAtExit{false};
MadeOnce<FileLogging> gFile;

constexpr char kSyslog[] = "syslog";

// The parent writes the cache. A file that another thread was using is left to the parent; the child's next
// message opens it again.
void fileInChild(bool intact) {
  FileLogging* const file = gFile.ifMade();
  if (file == nullptr) return;
  if (intact) return file->forgetAfterFork();
  new (file) FileLogging;
  gOpened = false;
}

// The process's log file.
FileLogging& gFileLogging() {
  FileLogging& file = gFile.get();
  heldOverFork(ForkOrder::LogFile, file.mutex);
  inForkedChild(ForkOrder::LogFile, fileInChild);
  inForkedChild(ForkOrder::Syslog, syslogInChild);
  return file;
}

// Writes the file's cache when the process exits.
void flushAtExit() {
  if (!gFlushesAtExit.exchange(true)) atexit([] { gFileLogging().flushFromNowOn(); });
}

// Reading the configuration may log, which opens the log.
thread_local int gReadersInThread = 0;
struct Reader {
  Reader() { ++gReadersInThread; }
  ~Reader() { --gReadersInThread; }
};

__attribute__((format(printf, 1, 2))) void logError(const char* format, ...) {
  CharAccumulator<512> text;
  text.append(format);
  va_list args;
  va_start(args, format);
  WriteMessage(0, Logger::Error, text, args);
  va_end(args);
}

}  // namespace

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

int DestinationSettings::apply() const {
  gOpened = true;
  int error = 0;
  if (destination == kSyslog) {
    gFileLogging().close();
  } else {
    error = gFileLogging().init(destination.c_str(), file);
    if (error == 0) {
      flushAtExit();
      return 0;
    }
  }
  if (callOpenlog) openSyslog();
  return error;
}

void DestinationSettings::report(int error) const {
  if (error == 0 || geteuid() != 0) return;
  // strerror's text is per thread. NOLINTNEXTLINE(concurrency-mt-unsafe)
  logError("Could not open %s: %s", destination.c_str(), strerror(error));
}

void openLog(bool reopen) {
  constexpr int kDeepestReader = 2;
  if ((gOpened && !reopen) || gReadersInThread >= kDeepestReader) return;
  Reader reader;
  const DestinationSettings settings = DestinationSettings::read();
  int error = 0;
  {
    Lock lock(gLogMessageProtect());
    if (gOpened && !reopen) return;
    error = settings.apply();
  }
  settings.report(error);
}

void FinalRendering(int priority, const char* format, va_list args) {
  openLog(false);
  if (gFileLogging().logIfOpened(format, args)) return;
  char text[512];
  formatEscaped(text, sizeof text, format, args);
  writeSyslog(priority, text);
}

}  // namespace vesk
