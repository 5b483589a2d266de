// Building a message: the prefix and the caller's format become one format, which each sink expands.

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string_view>

#include <fokrazo/char_accumulator.h>
#include <fokrazo/error_util.h>
#include <fokrazo/log.h>
#include <fokrazo/osport.h>
#include "util/hook/hooks.h"
#include "util/log/log_internal.h"
#include "util/text/hex_digits.h"
#include "util/text/made_once.h"
#include "util/thread/calendar.h"
#include "util/thread/clock.h"

// From the C library. NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" const char* __progname;

namespace vesk {

using Text = CharAccumulator<512>;

thread_local int LogCall::depth = 0;

std::atomic<bool> gMemoryLogStarted{false};

namespace {

bool isEmpty(const char* text) {
  return text == nullptr || *text == '\0';
}

// Read once: a forked child keeps its parent's process id in messages.
struct ProcessIdentity {
  char host[64];
  int pid = static_cast<int>(getpid());

  ProcessIdentity() {
    if (gethostname(host, sizeof host) != 0) strcpy(host, "NOHOSTNAME");
    host[sizeof host - 1] = '\0';
    host[strcspn(host, ".")] = '\0';
  }
};

void appendFile(Text& text, const char* file) {
  const char* slash = strrchr(file, '/');
  text.appendPlain(slash != nullptr ? slash + 1 : file);
}

void appendLine(Text& text, int line) {
  char digits[16];
  snprintf(digits, sizeof digits, ":%d", line);
  text.append(digits);
}

// Appends "session.cpp:120:reConnect()", with the quotes.
void appendPosition(Text& text, int showMore, const char* file, int line, const char* function) {
  const bool showFile = (showMore & Logger::ShowFile) != 0 && !isEmpty(file);
  const bool showFunction = (showMore & Logger::ShowFunction) != 0;
  if (!showFile && !(showFunction && !isEmpty(function))) return;
  text.append('"');
  if (showFile) {
    appendFile(text, file);
    if ((showMore & Logger::ShowLine) != 0 && line >= 1) appendLine(text, line);
    if (showFunction && function != nullptr) text.append(':');
  }
  if (showFunction && !isEmpty(function)) {
    text.appendPlain(function);
    text.append("()");
  }
  text.append("\" ");
}

// Five columns and a blank.
void appendLevel(Text& text, Logger::LogLevel level) {
  const char* name = LevelToText(level);
  for (int column = 0; column < 5; ++column) text.append(*name != '\0' ? *name++ : ' ');
  text.append(' ');
}

constexpr unsigned int kBytesPerRow = 16;

// Sixteen columns of "xx " and, from column 50 on, the characters; one blank ends the row.
void formatHexRow(char (&row)[81], const unsigned char* data, unsigned int count) {
  constexpr unsigned int kCharacters = 50;
  memset(row, ' ', sizeof row);
  for (unsigned int i = 0; i < count; ++i) {
    putHex(row + 3 * i, data[i]);
    row[kCharacters + i] = data[i] >= 0x20 && data[i] <= 0x7F ? static_cast<char>(data[i]) : '.';
  }
  row[kCharacters + count + 1] = '\0';
}

}  // namespace

char* unfinishedConversion(char* format) {
  for (char* percent = format; (percent = strchr(percent, '%')) != nullptr;) {
    char* conversion = percent + 1 + strspn(percent + 1, "#0- +'I123456789.*$hlLqjzt");
    if (*conversion == '\0') return percent;
    percent = conversion + 1;
  }
  return format + strlen(format);
}

const char* programName() {
  try {
    if (isEmpty(__progname)) detect_progname();
  } catch (const VESKException&) {
    return "unknown";
  }
  return __progname;
}

// Local time, host, program and process. localtime_r checks the time zone's file on each call, so each thread
// caches the text for a second.
std::string_view timeAndProcess() {
  thread_local struct {
    time_t second;
    size_t length;  // 0: not yet built
    char text[512];
  } cached;
  const time_t now = dayclock::now();
  if (cached.length > 0 && now == cached.second) return {cached.text, cached.length};
  cached.second = now;
  static MadeOnce<const ProcessIdentity> identity;
  const ProcessIdentity& process = identity.get();
  const tm local = calendar::local(now);
  const long minutes = std::labs(local.tm_gmtoff) / 60;
  snprintf(cached.text, sizeof cached.text,
           "%d-%02d-%02d %02d:%02d:%02d %c%02ld%02ld %s %s[%d]: ", local.tm_year + 1900, local.tm_mon + 1,
           local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec, local.tm_gmtoff < 0 ? '-' : '+',
           minutes / 60, minutes % 60, process.host, programName(), process.pid);
  cached.length = strlen(cached.text);
  return {cached.text, cached.length};
}

int BuildMessagePrefix(char* buffer, int size, const char* lead) {
  if (buffer == nullptr || size <= 0) return 0;
  size_t wanted = 0;
  size_t left = static_cast<size_t>(size) - 1;
  for (const std::string_view part : {std::string_view(lead), timeAndProcess()}) {
    const size_t count = part.copy(buffer, left);
    buffer += count;
    left -= count;
    wanted += part.size();
  }
  *buffer = '\0';
  return static_cast<int>(std::min(wanted, static_cast<size_t>(size)));
}

void Logger::appendPrefix(Text& text, LogLevel level, const char* file, int line,
                          const char* function) const {
  appendLevel(text, level);
  if (const char* thread = GetThreadName()) {
    text.append('<');
    text.appendPlain(thread);
    text.append("> ");
  }
  text.append(m_displayName.c_str());
  appendPosition(text, getShowMore(), file, line, function);
}

void LoggerTree::log(Logger& logger, Logger::LogLevel level, const char* file, int line, const char* function,
                     const char* format, va_list args) {
  if (!logger.isEnabled(level)) return;
  const LogCall call;
  if (call.isTooDeep()) return;
  Text text;
  logger.appendPrefix(text, level, file, line, function);
  text.append(format);
  if (gMemoryLogStarted && level >= logger.getEffectiveMemoryLevel())
    kHooks.writeToMemory(text.terminate(), args);
  if (level >= logger.getEffectiveLevel()) WriteMessage(logger.getEffectiveFacility(), level, text, args);
}

void Logger::log(LogLevel level, const char* file, int line, const char* function, const char* format, ...) {
  va_list args;
  va_start(args, format);
  LoggerTree::log(*this, level, file, line, function, format, args);
  va_end(args);
}

void Logger::logSysErr(LogLevel level, int errnum, const char* file, int line, const char* function,
                       const char* format, ...) {
  if (!isEnabled(level)) return;
  const LogCall call;
  if (call.isTooDeep()) return;
  Text text;
  appendPrefix(text, level, file, line, function);
  text.append(format);
  text.append(": ");
  text.appendPlain(strerror(errnum));  // NOLINT(concurrency-mt-unsafe): the text is per thread
  va_list args;
  va_start(args, format);
  WriteMessage(getEffectiveFacility(), level, text, args);
  va_end(args);
}

void Logger::hexData(LogLevel level, const char* caption, const unsigned char* data, unsigned int length) {
  if (!isEnabled(level)) return;
  log(level, kLogSource, __LINE__, "hexData", "%s", caption);
  for (unsigned int done = 0, count; done < length; done += count) {
    char row[81];
    count = std::min(length - done, kBytesPerRow);
    formatHexRow(row, data + done, count);
    log(level, kLogSource, __LINE__, "hexData", "%s", row);
  }
}

}  // namespace vesk
