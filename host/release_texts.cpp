#include "host/release_texts.h"

#include <algorithm>

#include <fokrazo/strutil.h>

namespace vesk {
namespace {

constexpr char kGnu[] = " GNU/Linux";

bool holds(const std::string& text, const char* part) {
  return text.find(part) != std::string::npos;
}

/// Iterates over the lines of a text.
class Lines {
 public:
  explicit Lines(const std::string& text) : m_text(text) {}

  bool atEnd() const { return m_position == m_text.size(); }
  /// The next line with its newline; empty at the end.
  std::string next() {
    const size_t begin = m_position;
    m_position = std::min(m_text.find('\n', begin), m_text.size() - 1) + 1;
    return m_text.substr(begin, m_position - begin);
  }
  /// The next line without its newline.
  std::string nextText() {
    std::string line = next();
    if (!line.empty() && line.back() == '\n') line.pop_back();
    return line;
  }

 private:
  const std::string& m_text;
  size_t m_position = 0;
};

/// A value of os-release, unquoted as by a shell.
std::string unquoted(const std::string& value) {
  const char quote = value.empty() ? '\0' : value.front();
  if (quote != '"' && quote != '\'') return value;
  std::string text;
  for (size_t at = 1; at < value.size() && value[at] != quote; ++at) {
    if (value[at] == '\\' && quote == '"' && at + 1 < value.size()) ++at;
    text += value[at];
  }
  return text;
}

/// The version in lines such as "VERSION = 10"; empty if there is none.
std::string suseVersion(Lines& lines) {
  while (!lines.atEnd()) {
    const std::string line = lines.nextText();
    const size_t word = line.find("VERSION");
    if (word == std::string::npos) continue;
    const size_t value = line.find_first_not_of(" =", word + 8);
    return value == std::string::npos ? std::string() : line.substr(value);
  }
  return std::string();
}

bool readRelease(const std::string& name, const std::string& line, Lines& rest, Distribution& found) {
  const size_t release = line.find("release");
  const size_t solaris = line.find("Solaris");
  if (release != std::string::npos) {
    found = {line.substr(0, release > 0 ? release - 1 : 0), line.substr(release + 8)};
  } else if (holds(name, "SuSE") || holds(name, "UnitedLinux")) {
    found = {"SuSE Linux", suseVersion(rest)};
  } else if (holds(name, "gentoo")) {
    found = {"Gentoo Base System", line.substr(27)};
  } else if (solaris != std::string::npos) {
    const std::string version = line.substr(solaris + 8);
    found = {"Solaris", version.substr(0, version.find(' '))};
  } else {
    return false;
  }
  return true;
}

bool readVersion(const std::string& name, const std::string& line, Distribution& found) {
  if (holds(name, "debian"))
    found = {"Debian", line};
  else if (holds(name, "slackware"))
    found = {"Slackware", line.substr(10)};
  else
    return false;
  return true;
}

}  // namespace

Distribution readOsRelease(const std::string& text) {
  Distribution found;
  std::string codename;
  for (Lines lines(text); !lines.atEnd();) {
    const std::string line = trimWhiteSpace(lines.next());
    const size_t equals = line.find('=');
    if (equals == std::string::npos) continue;
    const std::string key = line.substr(0, equals);
    const std::string value = unquoted(line.substr(equals + 1));
    if (key == "NAME") found.os = value;
    if (key == "VERSION_ID") found.version = value;
    if (key == "VERSION_CODENAME") codename = value;
  }
  if (endsWith(found.os, kGnu, false, false)) found.os.erase(found.os.size() - (sizeof kGnu - 1));
  if (!found.version.empty() && !codename.empty()) found.version += " (" + codename + ")";
  return found;
}

Distribution readLsbRelease(const std::string& text) {
  Distribution found;
  for (Lines lines(text); !lines.atEnd();) {
    const std::string line = lines.next();
    // The values start at fixed columns.
    if (holds(line, "Distributor ID:")) found.os = trimWhiteSpace(line.substr(16));
    if (holds(line, "Release:")) found.version = trimWhiteSpace(line.substr(9));
    if (holds(line, "Codename:")) found.version += " (" + trimWhiteSpace(line.substr(10)) + ")";
  }
  return found;
}

bool readReleaseFile(const std::string& name, const std::string& text, Distribution& found) {
  Lines lines(text);
  const std::string line = lines.nextText();
  return holds(name, "release") ? readRelease(name, line, lines, found) : readVersion(name, line, found);
}

}  // namespace vesk
