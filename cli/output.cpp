#include "cli/output.h"

#include <algorithm>
#include <cstdio>

#include <fokrazo/strutil.h>

namespace cli {

namespace {

// The length of the well-formed UTF-8 sequence (RFC 3629) at `position`, 0 if there is none.
size_t utf8Length(const std::string& text, size_t position) {
  const auto byte = [&](size_t i) -> unsigned char { return i < text.size() ? text[i] : 0; };
  const unsigned char lead = byte(position);
  if (lead < 0x80) return 1;
  const size_t length = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
  if (lead < 0xc2 || lead > 0xf4) return 0;
  for (size_t i = 1; i < length; ++i)
    if ((byte(position + i) & 0xc0) != 0x80) return 0;
  const unsigned char second = byte(position + 1);
  const bool overlong = (lead == 0xe0 && second < 0xa0) || (lead == 0xf0 && second < 0x90);
  const bool surrogate = lead == 0xed && second > 0x9f;
  const bool beyond = lead == 0xf4 && second > 0x8f;
  return overlong || surrogate || beyond ? 0 : length;
}

// The length of the control character at `position`, 0 if there is none. Those behind DEL are two bytes.
size_t controlLength(const std::string& text, size_t position) {
  const unsigned char byte = text[position];
  if (byte < 0x20 || byte == 0x7f) return 1;
  if (byte != 0xc2 || position + 1 == text.size()) return 0;
  const unsigned char second = text[position + 1];
  return second >= 0x80 && second < 0xa0 ? 2 : 0;
}

bool isText(const std::string& value) {
  for (size_t i = 0; i < value.size();) {
    const size_t length = utf8Length(value, i);
    if (length == 0 || controlLength(value, i) != 0) return false;
    i += length;
  }
  return true;
}

std::string withoutControls(const std::string& text) {
  std::string out;
  for (size_t i = 0; i < text.size();) {
    const size_t control = controlLength(text, i);
    out += control != 0 ? '?' : text[i];
    i += std::max<size_t>(control, 1);
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

void complain(const std::string& what) {
  fflush(stdout);
  fprintf(stderr, "fokrazo: %s\n", withoutControls(what).c_str());
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
    for (const std::string& value : field.values) out += field.name + ": " + shown(value) + '\n';
  return out;
}

void Output::record(const Record& record, const std::string& line) {
  printf("%s\n", m_json ? record.json().c_str() : line.c_str());
}

void Output::record(const Record& record) {
  if (m_json)
    printf("%s\n", record.json().c_str());
  else
    printf("%s%s", m_isFirst ? "" : "\n", record.lines().c_str());
  m_isFirst = false;
}

}  // namespace cli
