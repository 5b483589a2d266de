#include <fokrazo/adattribute.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <ostream>

#include <fokrazo/strutil.h>
#include "util/error/throw.h"
#include "util/text/printed.h"
#include "util/thread/calendar.h"

const std::string TRUE_STR("TRUE");
const std::string FALSE_STR("FALSE");

namespace vesk {
namespace {

constexpr char kSource[] = "lrpc/adattribute";

// Seconds since the epoch of "YYYY:MM:DD:hh:mm:ss.0Z", or -1.
time_t utcSeconds(const std::string& text) {
  tm fields{};
  if (!strptime(text.c_str(), "%Y:%m:%d:%H:%M:%S.0Z", &fields)) return -1;
  return calendar::toSeconds(fields);
}

const char* marksText(bool dirty, bool serialized) {
  if (dirty) return serialized ? "(ds)" : "(d)";
  return serialized ? "(s)" : "";
}

}  // namespace

ADAttribute::ADAttribute(std::string_view name) : m_name(name), m_lcName(lower(m_name)) {}

void ADAttribute::setName(std::string_view name) {
  m_name = name;
  m_lcName = lower(m_name);
}

void ADAttribute::setMarks(bool dirty, bool serialized) {
  m_dirty = dirty;
  m_serialized = serialized;
}

const std::string& ADAttribute::first() const {
  if (empty())
    FOKRAZO_THROW(SystemException, "SystemException", 0, "ADAttribute '%s' is empty", m_name.c_str());
  return front();
}

ADAttribute::operator std::string() const {
  return first();
}

bool ADAttribute::toBool() const {
  return upper(first()) == TRUE_STR;
}

int ADAttribute::toInt() const {
  return static_cast<int>(strtol(first().c_str(), nullptr, 10));
}

unsigned int ADAttribute::toUInt() const {
  return atoui(first().c_str());
}

Int64 ADAttribute::toInt64() const {
  return Int64(first());
}

long ADAttribute::toTime() const {
  constexpr size_t kLength = 17;
  constexpr size_t kFieldEnds[] = {4, 7, 10, 13, 16};
  std::string text = first();
  time_t seconds = -1;
  if (text.size() == kLength) {
    for (size_t end : kFieldEnds) text.insert(end, 1, ':');
    seconds = utcSeconds(text);
  }
  if (seconds < 0)
    FOKRAZO_THROW(SystemException, "SystemException", 0,
                  "ADAttribute '%s' is not a UTC time, time value is %s ", m_name.c_str(), text.c_str());
  return seconds;
}

long ADAttribute::toUnixTime() const {
  return static_cast<int32_t>(toInt64().value());
}

ADAttribute& ADAttribute::operator=(const std::string& value) {
  Values old;  // `value` may be one of them
  swap(old);
  return *this += value;
}

ADAttribute& ADAttribute::operator=(const char* value) {
  return *this = std::string(value);
}

ADAttribute& ADAttribute::operator=(bool value) {
  return *this = value ? TRUE_STR : FALSE_STR;
}

ADAttribute& ADAttribute::operator=(int value) {
  return *this = std::to_string(value);
}

ADAttribute& ADAttribute::operator=(unsigned int value) {
  return *this = std::to_string(value);
}

ADAttribute& ADAttribute::operator=(long value) {
  return *this = std::to_string(value);
}

ADAttribute& ADAttribute::operator=(Int64 value) {
  return *this = std::string(value);
}

ADAttribute& ADAttribute::operator=(const Values& values) {
  Values::operator=(values);
  setMarks(true, false);
  return *this;
}

ADAttribute& ADAttribute::operator+=(const std::string& value) {
  if (value.empty()) return *this;
  push_back(value);
  setMarks(true, false);
  return *this;
}

ADAttribute& ADAttribute::operator+=(const Values& values) {
  if (values.empty()) return *this;
  Values kept(values);  // `values` may be *this
  splice(end(), kept);
  setMarks(true, false);
  return *this;
}

void ADAttribute::addVal(const std::string& value, bool dirty, bool serialized) {
  setMarks(dirty, serialized);
  push_back(value);
}

void ADAttribute::addVal(const char* value, bool dirty, bool serialized) {
  addVal(std::string(value), dirty, serialized);
}

void ADAttribute::addVal(int value, bool dirty, bool serialized) {
  addVal(std::to_string(value), dirty, serialized);
}

void ADAttribute::addVal(bool value, bool dirty, bool serialized) {
  addVal(value ? TRUE_STR : FALSE_STR, dirty, serialized);
}

void ADAttribute::addCList(const std::string& text, bool dirty, bool serialized) {
  size_t begin = 0;
  while (begin <= text.size()) {
    size_t end = std::min(text.find(',', begin), text.size());
    std::string piece = trimWhiteSpace(text.substr(begin, end - begin));
    if (!piece.empty()) addVal(piece, dirty, serialized);
    begin = end + 1;
  }
}

bool ADAttribute::operator==(const ADAttribute& other) const {
  return static_cast<const Values&>(*this) == static_cast<const Values&>(other);
}

void ADAttribute::dump() const {
  printTo(stdout, [this](std::ostream& out) { dump(out); });
}

void ADAttribute::dump(std::ostream& out) const {
  out << m_name << marksText(m_dirty, m_serialized) << ':';
  const char* separator = "";
  for (const std::string& value : *this) {
    out << separator << printable(value);
    separator = ",";
  }
  out << '\n';
}

}  // namespace vesk
