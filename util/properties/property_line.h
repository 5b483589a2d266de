/// Lines, quoted regions and names in the text of the configuration file. Internal.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>

#include <fokrazo/ascii.h>
#include "util/text/ends_escaped.h"

namespace vesk {

/// The largest file of properties or list items that is read. Bounds the cost of a wrong path.
constexpr size_t kMaxPropertyFile = 64 * 1024 * 1024;

/// Characters of variable names, whatever the locale.
inline bool isVariableLetter(char c) {
  return isAsciiAlnum(c) || c == '_';
}

/// The length of the variable name at `begin`: letters, digits and underscores, or a single digit.
inline size_t variableNameLength(const std::string& text, size_t begin) {
  size_t end = begin;
  while (end < text.size() && isVariableLetter(text[end])) end++;
  const bool numbered = end > begin && isAsciiDigit(text[begin]);
  return numbered ? 1 : end - begin;
}

/// Scans a text: tracks the quoted region, and whether the next character is escaped.
class QuoteTracker {
 public:
  /// The open quote; 0 outside quotes.
  char quote() const { return m_quote; }
  bool escaped() const { return m_escaped; }
  void pass(char c) {
    const bool wasEscaped = m_escaped;
    m_escaped = c == '\\' && !wasEscaped;
    if (wasEscaped || (c != '"' && c != '\'')) return;
    if (m_quote == 0) {
      m_quote = c;
    } else if (m_quote == c) {
      m_quote = 0;
    }
  }

 private:
  char m_quote = 0;
  bool m_escaped = false;
};

/// Iterates over the physical lines of a text. A trailing newline is followed by an empty line.
class TextLines {
 public:
  explicit TextLines(const std::string& text, size_t position = 0) : m_text(text), m_position(position) {}

  bool atEnd() const { return m_atEnd; }
  /// Bytes before the next line.
  size_t position() const { return m_position; }
  /// The next line without its newline. Requires: not at the end.
  void next(std::string& line) {
    const char* start = m_text.data() + m_position;
    // The length is known. NOLINTNEXTLINE(bugprone-not-null-terminated-result)
    const void* newline = memchr(start, '\n', m_text.size() - m_position);
    m_atEnd = newline == nullptr;
    const size_t length = m_atEnd ? m_text.size() - m_position : static_cast<const char*>(newline) - start;
    line.assign(start, length);
    m_position = std::min(m_position + length + 1, m_text.size());
  }
  /// Returns to the line that begins at `position`.
  void goBack(size_t position) {
    m_position = position;
    m_atEnd = false;
  }

 private:
  const std::string& m_text;
  size_t m_position;
  bool m_atEnd = false;
};

/// Whether the line begins with "#" or "!".
inline bool isCommentLine(const std::string& line) {
  return !line.empty() && (line[0] == '#' || line[0] == '!');
}

/// Whether the text fits on one line: no newline, and no trailing backslash that would continue it.
inline bool isSingleLine(const std::string& text) {
  return text.find('\n') == std::string::npos && !endsEscaped(text);
}

/// Reads a logical line from TextLines or a similar class, as PropertySyntax::getLine does.
template <class Lines>
void readLogicalLine(Lines& lines, std::string& line, std::string& extra, bool skipComments) {
  lines.next(line);
  const bool comment = isCommentLine(line);
  if (comment && skipComments) return;
  while (endsEscaped(line) && !lines.atEnd()) {
    lines.next(extra);
    if (comment) extra.erase(0, extra.find_first_not_of("#!"));
    line.back() = ' ';
    line += extra;
  }
}

}  // namespace vesk
