// Levels, facilities and their names.

#include <syslog.h>

#include <fokrazo/ascii.h>
#include <fokrazo/log.h>
#include "util/log/log_internal.h"

namespace vesk {
namespace {

struct Level {
  const char* text;
  int syslogPriority;
};

// By number.
constexpr Level kLevels[] = {
    {"TRACE", LOG_DEBUG},  {"DEBUG", LOG_DEBUG}, {"DIAG", LOG_DEBUG},  {"INFO", LOG_INFO},
    {"WARN", LOG_WARNING}, {"ERROR", LOG_ERR},   {"FATAL", LOG_EMERG}, {"DISABLED", LOG_EMERG},
};
static_assert(sizeof kLevels / sizeof kLevels[0] == Logger::Disabled + 1, "every level has its row");

struct Facility {
  const char* text;
  int number;
};

constexpr Facility SYSLOG_FACILITIES[] = {
    {"auth", LOG_AUTH},     {"authpriv", LOG_AUTHPRIV}, {"cron", LOG_CRON},     {"daemon", LOG_DAEMON},
    {"ftp", LOG_FTP},       {"kern", LOG_KERN},         {"lpr", LOG_LPR},       {"mail", LOG_MAIL},
    {"news", LOG_NEWS},     {"syslog", LOG_SYSLOG},     {"user", LOG_USER},     {"uucp", LOG_UUCP},
    {"local0", LOG_LOCAL0}, {"local1", LOG_LOCAL1},     {"local2", LOG_LOCAL2}, {"local3", LOG_LOCAL3},
    {"local4", LOG_LOCAL4}, {"local5", LOG_LOCAL5},     {"local6", LOG_LOCAL6}, {"local7", LOG_LOCAL7},
};

}  // namespace

const char* LevelToText(Logger::LogLevel level) {
  return level < Logger::Trace || level > Logger::Disabled ? "" : kLevels[level].text;
}

int TextToLevel(const std::string& text) {
  if (text.empty()) return Logger::Info;
  for (const Level& row : kLevels)
    if (text == row.text) return static_cast<int>(&row - kLevels);
  return Logger::kInherit;
}

int TextToFacility(const std::string& text) {
  for (const Facility& row : SYSLOG_FACILITIES)
    if (equalIgnoringCase(text, row.text)) return row.number;
  return Logger::kInherit;
}

int syslogPriority(Logger::LogLevel level) {
  if (level < Logger::Trace) return kLevels[Logger::Trace].syslogPriority;
  return kLevels[level > Logger::Disabled ? Logger::Disabled : level].syslogPriority;
}

}  // namespace vesk
