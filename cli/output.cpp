#include "cli/output.h"

#include <cstdio>

#include "util/include/strutil.h"

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

bool isText(const std::string& value) {
  for (size_t i = 0; i < value.size();) {
    const unsigned char byte = value[i];
    if (byte < 0x20 || byte == 0x7f) return false;
    const size_t length = utf8Length(value, i);
    if (length == 0) return false;
    i += length;
  }
  return true;
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

std::string lineField(const std::string& value) {
  std::string out = value;
  for (char& c : out)
    if (c == ':' || static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = '?';
  return out;
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
