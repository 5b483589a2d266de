#include <fokrazo/strutil.h>

#include <fnmatch.h>

#include <algorithm>
#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <cwctype>
#include <string_view>

#include <fokrazo/ascii.h>
#include "util/text/strtou32.h"

const std::string STRCLS_TRUE("true");
const std::string STRCLS_FALSE("false");

namespace {

constexpr char kWhiteSpace[] = " \t\n\r\f\v";
constexpr char kListSeparator[] = ", ";

template <class Number>
std::string inRadix(Number value, int radix) {
  char digits[24];  // the longest 64-bit number has 22 digits, in octal
  return std::string(digits, std::to_chars(digits, digits + sizeof digits, value, radix).ptr);
}

template <class Unsigned>
std::string unsignedText(Unsigned value, int radix) {
  return inRadix(value, radix == 16 || radix == 8 ? radix : 10);
}

template <class String, class Convert>
String converted(const String& text, Convert convert) {
  String result(text);
  for (auto& c : result) c = convert(c);
  return result;
}

std::string_view trimmed(std::string_view text) {
  size_t first = text.find_first_not_of(kWhiteSpace);
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(kWhiteSpace) + 1 - first);
}

bool sameText(std::string_view a, std::string_view b, bool caseSensitive) {
  return caseSensitive ? a == b : vesk::equalIgnoringCase(a, b);
}

template <class List, class ToText>
std::string prettyPrint(const List& values, int limit, ToText toText) {
  std::string text;
  int count = 0;
  for (const auto& value : values)
    if (AddValue(text, toText(value), count, limit)) break;
  return text;
}

const std::string& unchanged(const std::string& text) {
  return text;
}

}  // namespace

std::string itoa(int value, int radix) {
  if (radix == 16 || radix == 8) return inRadix(static_cast<unsigned int>(value), radix);
  return inRadix(value, 10);
}

std::string uitoa(unsigned int value, int radix) {
  return unsignedText(value, radix);
}

std::string ulltoa(unsigned long long value, int radix) {
  return unsignedText(value, radix);
}

std::string dbltoa(double value) {
  char text[64];
  static_cast<void>(snprintf(text, sizeof text, "%f", value));
  return text;
}

std::string uidtoa(unsigned int uid) {
  return inRadix(uid, 10);
}

std::string gidtoa(unsigned int gid) {
  return inRadix(gid, 10);
}

const std::string& booltostr(bool value) {
  return value ? STRCLS_TRUE : STRCLS_FALSE;
}

unsigned int atoui(const char* text) {
  return vesk::strtou32(text, nullptr, 0);
}

std::string lower(const std::string& text) {
  return converted(text, vesk::asciiLower);
}

std::string upper(const std::string& text) {
  return converted(text, vesk::asciiUpper);
}

std::u16string lower(const std::u16string& text) {
  return converted(text, [](char16_t c) { return static_cast<char16_t>(towlower(c)); });
}

std::u16string upper(const std::u16string& text) {
  return converted(text, [](char16_t c) { return static_cast<char16_t>(towupper(c)); });
}

std::string trimWhiteSpace(const std::string& text) {
  return std::string(trimmed(text));
}

bool contains(const char* const* list, const std::string& text) {
  for (; list && *list; ++list)
    if (vesk::equalIgnoringCase(*list, text)) return true;
  return false;
}

bool contains(const std::string& text, const char* part) {
  return upper(text).find(upper(std::string(part))) != std::string::npos;
}

bool contains(const std::string& text, const std::string& part) {
  return contains(text, part.c_str());
}

bool stringInList(const std::list<std::string>& list, const std::string& text, bool caseSensitive) {
  return std::any_of(list.begin(), list.end(),
                     [&](const std::string& entry) { return sameText(entry, text, caseSensitive); });
}

bool stringMatchPatternList(const std::list<std::string>& patterns, const std::string& text,
                            bool caseSensitive) {
  const std::string subject = caseSensitive ? text : lower(text);
  return std::any_of(patterns.begin(), patterns.end(), [&](const std::string& pattern) {
    return fnmatch((caseSensitive ? pattern : lower(pattern)).c_str(), subject.c_str(), 0) == 0;
  });
}

bool startsWith(const std::string& text, const char* prefix, bool trim, bool caseSensitive) {
  std::string_view wanted(prefix);
  std::string_view subject = trim ? trimmed(text) : std::string_view(text);
  return sameText(subject.substr(0, wanted.size()), wanted, caseSensitive);
}

bool startsWith(const std::string& text, const std::string& prefix, bool trim, bool caseSensitive) {
  return startsWith(text, prefix.c_str(), trim, caseSensitive);
}

bool endsWith(const std::string& text, const std::string& suffix, bool trim, bool ignoreCase) {
  std::string_view subject = trim ? trimmed(text) : std::string_view(text);
  if (subject.size() <= suffix.size()) return false;
  return sameText(subject.substr(subject.size() - suffix.size()), suffix, !ignoreCase);
}

bool EndsWith(const std::string& text, const std::string& suffix, bool trim, bool ignoreCase) {
  return endsWith(text, suffix, trim, ignoreCase);
}

std::string concat(const std::list<std::string>& list, const std::string& separator) {
  std::string text;
  for (const std::string& entry : list) {
    if (!text.empty()) text += separator;
    text += entry;
  }
  return text;
}

std::string StringListToString(const std::list<std::string>& list) {
  return concat(list, kListSeparator);
}

bool AddValue(std::string& text, const std::string& value, int& count, int limit) {
  if (count++ >= limit) {
    text += ",...<truncated>";
    return true;
  }
  if (!text.empty()) text += kListSeparator;
  text += value;
  return false;
}

std::string PrettyPrint(const std::list<std::string>& values, int limit) {
  return prettyPrint(values, limit, unchanged);
}

std::string PrettyPrint(const std::vector<std::string>& values, int limit) {
  return prettyPrint(values, limit, unchanged);
}

std::string PrettyPrint(const std::vector<int>& values, int limit) {
  return prettyPrint(values, limit, [](int value) { return itoa(value, 10); });
}

std::string VS(const char* format, ...) {
  char text[512];
  va_list args;
  va_start(args, format);
  int length = vsnprintf(text, sizeof text, format, args);
  va_end(args);
  return length < 0 ? std::string() : std::string(text);
}

std::string strtime(const time_t* time) {
  char text[64];
  if (!ctime_r(time, text)) return "ctime_r failed";
  std::string line(text);
  if (!line.empty()) line.pop_back();
  return line;
}

std::string StripSuffix(const std::string& name, const std::string& suffix) {
  return name.substr(0, name.find(suffix));
}

std::string AddSuffix(const std::string& name, const std::string& separator, const std::string& suffix) {
  return name.find(separator) != std::string::npos ? name : name + separator + suffix;
}
