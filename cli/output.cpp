#include "cli/output.h"

#include <algorithm>
#include <cstdio>

#include <fokrazo/strutil.h>
#include <fokrazo/utf8.h>

namespace cli {

namespace {

bool isText(const std::string& value) {
  for (size_t i = 0; i < value.size();) {
    const vesk::Utf8Character character = vesk::utf8At(value, i);
    if (character.length == 0 || vesk::isTerminalControl(character.code)) return false;
    i += character.length;
  }
  return true;
}

// Replaces terminal controls, except `kept`, and bytes that are not UTF-8 with "?".
std::string withoutControls(const std::string& text, char kept = '\0') {
  std::string out;
  for (size_t i = 0; i < text.size();) {
    const vesk::Utf8Character character = vesk::utf8At(text, i);
    const bool isHarmless = character.length != 0 && !vesk::isTerminalControl(character.code);
    const size_t length = std::max<size_t>(character.length, 1);
    out += isHarmless || (text[i] == kept && kept != '\0') ? text.substr(i, length) : "?";
    i += length;
  }
  return out;
}

std::string quoted(const std::string& value) {
  std::string out = "\"";
  for (const char c : shown(value)) {
    if (c == '"' || c == '\\') out += '\\';
    out += c;
  }
  return out + '"';
}

}  // namespace

std::string shown(const std::string& value) {
  return isText(value) ? value : tohex(value);
}

std::string shownLines(const std::string& text) {
  std::string out;
  size_t begin = 0;
  for (size_t end; (end = text.find('\n', begin)) != std::string::npos; begin = end + 1)
    out += shown(text.substr(begin, end - begin)) + '\n';
  return out + shown(text.substr(begin));
}

std::string lineField(const std::string& value) {
  std::string out = withoutControls(value);
  std::replace(out.begin(), out.end(), ':', '?');
  return out;
}

void complain(const std::string& message) {
  fflush(stdout);
  fprintf(stderr, "fokrazo: %s\n", withoutControls(message).c_str());
}

Record& Record::text(const std::string& name, const std::string& value) {
  m_fields.push_back({name, Kind::Text, {value}});
  return *this;
}

Record& Record::number(const std::string& name, long long value) {
  m_fields.push_back({name, Kind::Number, {std::to_string(value)}});
  return *this;
}

Record& Record::boolean(const std::string& name, bool value) {
  m_fields.push_back({name, Kind::Boolean, {value ? "true" : "false"}});
  return *this;
}

Record& Record::texts(const std::string& name, const std::list<std::string>& values) {
  m_fields.push_back({name, Kind::Texts, values});
  return *this;
}

std::string Record::jsonValue(const Field& field) {
  if (field.kind == Kind::Number || field.kind == Kind::Boolean) return field.values.front();
  if (field.kind == Kind::Text) return quoted(field.values.front());
  std::string out = "[";
  for (const std::string& value : field.values) {
    if (out.size() > 1) out += ',';
    out += quoted(value);
  }
  return out + ']';
}

std::string Record::json() const {
  std::string out = "{";
  for (const Field& field : m_fields) {
    if (out.size() > 1) out += ',';
    out += quoted(field.name) + ':' + jsonValue(field);
  }
  return out + '}';
}

std::string Record::lines() const {
  std::string out;
  for (const Field& field : m_fields)
    for (const std::string& value : field.values) out += shown(field.name) + ": " + shown(value) + '\n';
  return out;
}

void Output::record(const Record& record, const std::string& text) {
  if (m_json)
    printf("%s\n", record.json().c_str());
  else
    print(text + '\n');
}

void Output::print(const std::string& text) {
  const std::string visible = withoutControls(text, '\n');
  fwrite(visible.data(), 1, visible.size(), stdout);
}

void Output::record(const Record& record) {
  if (m_json)
    printf("%s\n", record.json().c_str());
  else
    printf("%s%s", m_isFirst ? "" : "\n", record.lines().c_str());
  m_isFirst = false;
}

}  // namespace cli
