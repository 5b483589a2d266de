#include "cli/record.h"

#include <cstdio>

#include "cli/shown.h"

namespace cli {

namespace {

std::string quoted(const std::string& value) {
  std::string out = "\"";
  for (const char c : shown(value)) {
    if (c == '"' || c == '\\') out += '\\';
    out += c;
  }
  return out + '"';
}

}  // namespace

std::string textOf(std::chrono::duration<double, std::milli> value) {
  char text[32];
  snprintf(text, sizeof text, "%.1f", value.count());
  return text;
}

Record& Record::text(const std::string& name, const std::string& value) {
  m_fields.push_back({name, Kind::Text, {value}});
  return *this;
}

Record& Record::number(const std::string& name, long long value) {
  m_fields.push_back({name, Kind::Plain, {std::to_string(value)}});
  return *this;
}

Record& Record::milliseconds(const std::string& name, std::chrono::duration<double, std::milli> value) {
  m_fields.push_back({name, Kind::Plain, {textOf(value)}});
  return *this;
}

Record& Record::boolean(const std::string& name, bool value) {
  m_fields.push_back({name, Kind::Plain, {value ? "true" : "false"}});
  return *this;
}

Record& Record::texts(const std::string& name, const std::list<std::string>& values) {
  m_fields.push_back({name, Kind::Texts, values});
  return *this;
}

Record& Record::list(const std::string& name, const std::list<std::string>& values) {
  m_fields.push_back({name, Kind::List, values});
  return *this;
}

Record& Record::object(const std::string& name, const Record& value) {
  m_fields.push_back({name, Kind::Plain, {value.json()}});
  return *this;
}

Record& Record::first(const std::string& name, const std::string& value) {
  m_fields.insert(m_fields.begin(), {name, Kind::Text, {value}});
  return *this;
}

std::string Record::jsonValue(const Field& field) {
  if (field.kind == Kind::Plain) return field.values.front();
  if (field.kind == Kind::Text) return quoted(field.values.front());
  std::string out = "[";
  for (const std::string& value : field.values) {
    if (out.size() > 1) out += ',';
    out += field.kind == Kind::List ? value : quoted(value);
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

}  // namespace cli
