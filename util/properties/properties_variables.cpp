// The `$` variables of the configuration file.
#include <cstdlib>
#include <cstring>

#include <fokrazo/log.h>
#include <fokrazo/properties.h>
#include "util/hook/hooks.h"
#include "util/properties/property_line.h"

namespace vesk {

void Properties::loadVariables() {
  m_expansionLeft = kMaxExpansion;
  m_variables = kHooks.hostVariables();
}

void Properties::expandEnvVariables(std::string& value) {
  if (value.find('$') == std::string::npos) return;
  std::string out;
  QuoteTracker tracker;
  for (size_t at = 0; at < value.size(); at++) {
    const char c = value[at];
    if (c != '$') {
      out += c;
      tracker.pass(c);
    } else if (tracker.quote() == '\'' || tracker.escaped()) {
      if (!m_expandVariables) out += tracker.quote() == '\'' ? "$" : "$\\";
      out += c;
      tracker.pass(c);
    } else {
      const std::string name(value, at + 1, variableNameLength(value, at + 1));
      at += name.size();
      const std::string text = m_expandVariables ? replacement(name) : '$' + name + '$';
      out += text;
      // The inserted text is not scanned, but a trailing backslash escapes the next character.
      if (isEscaped(text)) tracker.pass('\\');
    }
  }
  value.swap(out);
}

std::string Properties::replacement(const std::string& name) {
  if (m_expansionLeft == 0) return std::string();
  std::string text = m_variables[name];
  if (text.empty()) {
    const char* environment = secure_getenv(name.c_str());
    if (environment) text = environment;
  }
  if (text.empty()) {
    const auto earlier = m_table.find(name);
    if (earlier != m_table.end() && earlier->second.raw()) text = *earlier->second.raw();
  }
  unescapeValue(text);
  if (text.size() <= m_expansionLeft) {
    m_expansionLeft -= text.size();
    return text;
  }
  VESK_LOG(getLogger("util.properties", false), Warn,
           "Too much text from the variables of the property file, from %s on", name.c_str());
  m_expansionLeft = 0;
  return std::string();
}

void Properties::unexpandEnvVariables(std::string& value) const {
  if (m_expandVariables || value.find('$') == std::string::npos) return;
  const auto isAt = [&value](size_t at, const char* mark) {
    return value.compare(at, strlen(mark), mark) == 0;
  };
  std::string out;
  QuoteTracker tracker;
  for (size_t at = 0; at < value.size(); at++) {
    const char c = value[at];
    const bool literal = tracker.quote() == '\'';
    const bool escaped = tracker.escaped();
    out += c;
    tracker.pass(c);
    if (c != '$') continue;
    if (literal) {
      if (isAt(at + 1, "$")) at++;
    } else if (escaped) {
      if (isAt(at + 1, "\\$")) at += 2;
    } else {
      const size_t length = variableNameLength(value, at + 1);
      out.append(value, at + 1, length);
      at += length;
      if (isAt(at + 1, "$")) at++;
    }
  }
  value.swap(out);
}

}  // namespace vesk
