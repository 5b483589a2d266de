#include <fokrazo/property_syntax.h>

#include <istream>

#include <fokrazo/log.h>
#include "util/properties/property_line.h"
#include "util/text/ends_escaped.h"

namespace vesk {

namespace {

constexpr char kFileReference[] = "file:";
constexpr size_t kFileReferenceLength = sizeof kFileReference - 1;

struct Special {
  char letter;
  char control;
};

constexpr Special kSpecials[] = {
    {'t', '\t'}, {'n', '\n'}, {'r', '\r'}, {'v', '\v'}, {'f', '\f'},
};

/// The control character for a letter after a backslash; 0 if none.
char controlOf(char letter) {
  for (const Special& special : kSpecials)
    if (special.letter == letter) return special.control;
  return 0;
}

/// The inverse of controlOf.
char letterOf(char control) {
  for (const Special& special : kSpecials)
    if (special.control == control) return special.letter;
  return 0;
}

bool isSeparator(char c) {
  return isAsciiSpace(c) || c == ':' || c == '=';
}

bool isListSeparator(char c) {
  return isAsciiSpace(c) || c == ',';
}

bool contains(const std::string& text, char c) {
  return text.find(c) != std::string::npos;
}

void trim(std::string& text) {
  size_t end = text.size();
  while (end > 0 && isAsciiSpace(text[end - 1])) end--;
  size_t begin = 0;
  while (begin < end && isAsciiSpace(text[begin])) begin++;
  text.erase(end);
  text.erase(0, begin);
}

/// The lines of a stream, for readLogicalLine.
class StreamLines {
 public:
  explicit StreamLines(std::istream& stream) : m_stream(stream) {}

  bool atEnd() const { return !m_stream.good(); }
  void next(std::string& line) {
    line.clear();
    std::getline(m_stream, line);
  }

 private:
  std::istream& m_stream;
};

/// The end of the key that begins at `begin`.
size_t endOfKey(const std::string& line, size_t begin) {
  bool escaped = false;
  for (size_t i = begin; i < line.size(); i++) {
    if (isSeparator(line[i]) && !escaped) return i;
    escaped = line[i] == '\\' && !escaped;
  }
  return line.size();
}

// In a key, a backslash escapes only separators and backslashes.
void unescapeKey(std::string& key) {
  size_t out = 0;
  for (size_t i = 0; i < key.size(); i++) {
    const bool pair = key[i] == '\\' && i + 1 < key.size() && (isSeparator(key[i + 1]) || key[i + 1] == '\\');
    key[out++] = pair ? key[++i] : key[i];
  }
  key.resize(out);
}

// A leading blank keeps a key from being read as a comment.
std::string escapeKey(const std::string& key) {
  std::string escaped = PropertySyntax::isComment(key) ? " " : "";
  for (size_t i = 0; i < key.size(); i++) {
    const bool last = i + 1 == key.size();
    const bool pair = key[i] == '\\' && (last || isSeparator(key[i + 1]) || key[i + 1] == '\\');
    if (pair || isSeparator(key[i])) escaped += '\\';
    escaped += key[i];
  }
  return escaped;
}

/// Whether unescapeValue would remove quotes.
bool isOneQuotedRegion(const std::string& value) {
  if (value.size() < 2 || (value[0] != '"' && value[0] != '\'')) return false;
  bool escaped = false;
  for (size_t i = 1; i < value.size(); i++) {
    if (value[i] == value[0] && !escaped) return i + 1 == value.size();
    escaped = value[i] == '\\' && !escaped;
  }
  return false;
}

// Copies one mark of a load without expansion: "$$" is a dollar sign, "$name$" a reference. Returns the index
// of its last character.
size_t appendUnmarked(const std::string& value, size_t dollar, std::string& out) {
  if (dollar + 1 < value.size() && value[dollar + 1] == '$') {
    out += "\\$";
    return dollar + 1;
  }
  const size_t end = dollar + 1 + variableNameLength(value, dollar + 1);
  out.append(value, dollar, end - dollar);
  if (end >= value.size() || value[end] != '$') return end - 1;
  // Without the end mark, the next letter must not extend the name.
  if (end + 1 < value.size() && isVariableLetter(value[end + 1])) out += '\\';
  return end;
}

/// escapeValue without the enclosing quotes. `wrapped`: the caller adds them.
std::string escapeCharacters(const std::string& value, bool keepDollar, bool wrapped) {
  std::string out;
  out.reserve(value.size() + 8);
  for (size_t i = 0; i < value.size(); i++) {
    const char c = value[i];
    if (c == '$' && !keepDollar) {
      i = appendUnmarked(value, i, out);
      continue;
    }
    const char letter = letterOf(c);
    const bool separates = (c == ' ' || c == ',') && !wrapped;
    if (letter != 0 || separates || c == '"' || c == '\'' || c == '\\' || c == '$') out += '\\';
    out += letter != 0 ? letter : c;
  }
  return out;
}

/// The position of the first double blank, quote or escape.
size_t endOfPlainText(const std::string& value) {
  size_t i = 0;
  for (; i < value.size(); i++) {
    const char c = value[i];
    if (c > '\'' && c != '\\') continue;
    const bool single = c == ' ' && i + 1 < value.size() && value[i + 1] > ' ';
    if (!single && (isAsciiSpace(c) || c == '"' || c == '\'' || c == '\\')) break;
  }
  return i;
}

void joinWhitespaces(std::string& value) {
  QuoteTracker tracker;
  size_t out = endOfPlainText(value);
  for (size_t i = out; i < value.size(); i++) {
    char c = value[i];
    if (isAsciiSpace(c) && tracker.quote() == 0) {
      while (i + 1 < value.size() && isAsciiSpace(value[i + 1])) i++;
      c = ' ';
    }
    tracker.pass(c);
    value[out++] = c;
  }
  value.resize(out);
}

std::string wrapInQuotes(const std::string& value, bool keepDollar) {
  return '"' + escapeCharacters(value, keepDollar, true) + '"';
}

}  // namespace

bool PropertySyntax::isEscaped(const std::string& text) {
  return endsEscaped(text);
}

bool PropertySyntax::isQuoted(const std::string& text) {
  QuoteTracker tracker;
  for (char c : text) tracker.pass(c);
  return tracker.quote() != 0;
}

bool PropertySyntax::isComment(const std::string& line) {
  return isCommentLine(line);
}

void PropertySyntax::getLine(std::istream& stream, std::string& line, std::string& extra, bool skipComments) {
  StreamLines lines(stream);
  readLogicalLine(lines, line, extra, skipComments);
}

void PropertySyntax::getLine(std::istream& stream, std::string& line) {
  std::string extra;
  extra.reserve(1024);
  getLine(stream, line, extra, true);
}

bool PropertySyntax::getPropertyFromLine(const std::string& line, std::string& key, std::string& value) {
  if (isComment(line)) return false;
  size_t begin = 0;
  while (begin < line.size() && isAsciiSpace(line[begin])) begin++;
  const size_t end = endOfKey(line, begin);
  if (end == begin) return false;
  size_t valueBegin = std::min(end + 1, line.size());
  if (valueBegin < line.size() && line[end] != '=' && line[valueBegin] == '=') valueBegin++;
  while (valueBegin < line.size() && isAsciiSpace(line[valueBegin])) valueBegin++;
  const bool hasEscapes = contains(line, '\\');
  key.assign(line, begin, end - begin);
  if (hasEscapes) unescapeKey(key);
  value.assign(line, valueBegin, std::string::npos);
  removeWhitespaces(value);
  if (hasEscapes) replaceSpecials(value);
  return true;
}

bool PropertySyntax::putPropertyToLine(std::string& line, const std::string& key, const std::string& value,
                                       bool keepDollar) {
  if (key.empty() || contains(key, '\n')) return false;
  line = escapeKey(key) + ": " + encodeValue(value, keepDollar);
  return true;
}

bool PropertySyntax::putPropertyToLine(std::string& line, const std::string& key, const ValueList& list,
                                       bool keepDollar) {
  if (!putPropertyToLine(line, key, std::string(), keepDollar)) return false;
  line += encodeList(list, keepDollar);
  return true;
}

void PropertySyntax::removeWhitespaces(std::string& value) {
  const size_t size = value.size();
  size_t i = 0;
  while (i < size && isAsciiSpace(value[i])) i++;
  if (i > 0) value.erase(0, i);
  joinWhitespaces(value);
  if (value.empty() || !isAsciiSpace(value.back())) return;
  const char last = value.back();
  value.pop_back();
  if (isEscaped(value)) value += last;
}

void PropertySyntax::replaceSpecials(std::string& value) {
  if (!contains(value, '\\')) return;
  bool escaped = false;
  size_t out = 0;
  for (char c : value) {
    const char control = escaped ? controlOf(c) : 0;
    escaped = c == '\\' && !escaped;
    if (control != 0)
      value[out - 1] = control;
    else
      value[out++] = c;
  }
  value.resize(out);
}

std::string PropertySyntax::restoreSpecials(const std::string& value) {
  std::string text;
  bool escaped = false;
  for (char c : value) {
    const char letter = letterOf(c);
    if (letter != 0 && !escaped) text += '\\';
    text += letter != 0 ? letter : c;
    escaped = c == '\\' && !escaped;
  }
  return text;
}

void PropertySyntax::removeEscapes(std::string& value) {
  if (!contains(value, '\\')) return;
  QuoteTracker tracker;
  size_t out = 0;
  for (char c : value) {
    const bool removed = c == '\\' && tracker.quote() == 0 && !tracker.escaped();
    tracker.pass(c);
    if (!removed) value[out++] = c;
  }
  value.resize(out);
}

void PropertySyntax::unescapeValue(std::string& value, bool unused) {
  if (isOneQuotedRegion(value)) removeQuotes(value, unused);
}

void PropertySyntax::removeQuotes(std::string& value, bool) {
  QuoteTracker tracker;
  size_t out = 0;
  for (char c : value) {
    const bool wasEscaped = tracker.escaped();
    const char before = tracker.quote();
    tracker.pass(c);
    if (tracker.quote() != before) continue;
    if (before == '"' && c == '\\' && !wasEscaped) continue;
    const char control = before == '"' && wasEscaped ? controlOf(c) : 0;
    value[out++] = control != 0 ? control : c;
  }
  value.resize(out);
}

std::string PropertySyntax::escapeValue(const std::string& value, bool keepDollar) {
  return contains(value, ' ') ? wrapInQuotes(value, keepDollar) : escapeCharacters(value, keepDollar, false);
}

std::string PropertySyntax::encodeValue(const std::string& value, bool keepDollar) {
  return isOneQuotedRegion(value) ? wrapInQuotes(value, keepDollar) : escapeValue(value, keepDollar);
}

std::string PropertySyntax::encodeList(const ValueList& list, bool keepDollar) {
  std::string text;
  for (const std::string& item : list) {
    if (!text.empty()) text += ' ';
    const bool wrapped = item.empty() || item.find_first_of("\t\n\v\f\r") != std::string::npos;
    text += wrapped ? wrapInQuotes(item, keepDollar) : encodeValue(item, keepDollar);
  }
  return text;
}

PropertySyntax::ValueList PropertySyntax::splitList(const std::string& raw) {
  ValueList list;
  size_t i = 0;
  while (i < raw.size()) {
    if (isListSeparator(raw[i])) {
      i++;
      continue;
    }
    QuoteTracker tracker;
    const size_t begin = i;
    while (i < raw.size() && (tracker.quote() != 0 || tracker.escaped() || !isListSeparator(raw[i])))
      tracker.pass(raw[i++]);
    list.emplace_back(raw, begin, i - begin);
    removeEscapes(list.back());
    unescapeValue(list.back());
  }
  return list;
}

PropertySyntax::ValueList PropertySyntax::readList(std::istream& stream) {
  ValueList list;
  std::string line;
  while (std::getline(stream, line)) {
    trim(line);
    if (line.empty() || isComment(line)) continue;
    unescapeValue(line);
    list.push_back(line);
  }
  return list;
}

std::string PropertySyntax::valueListToString(const ValueList& list, bool escape, bool keepDollar,
                                              char separator) {
  std::string text;
  bool first = true;
  for (const std::string& item : list) {
    if (!first) text += separator;
    first = false;
    text += escape ? escapeValue(item, keepDollar) : item;
  }
  return text;
}

bool PropertySyntax::isFileReference(const std::string& value) {
  return value.compare(0, kFileReferenceLength, kFileReference) == 0;
}

std::string PropertySyntax::getFileNameFromFileReference(const std::string& value) {
  if (!isFileReference(value)) return std::string();
  std::string path(value, kFileReferenceLength);
  trim(path);
  return path;
}

long PropertySyntax::timeFactor(char unit) {
  switch (unit) {
    case 's':
      return 1;
    case 'm':
      return 60;
    case 'h':
      return 3600;
    case 'd':
      return 86400;
    case 'w':
      return 604800;
    case 'M':
      return 2628000;
    case 'y':
      return 31536000;
  }
  VESK_LOG(getLogger("util.properties", false), Warn, "Bad unit specification in property file: %c", unit);
  return 0;
}

}  // namespace vesk
