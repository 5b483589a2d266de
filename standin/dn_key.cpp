#include "standin/dn_key.h"

#include <cctype>
#include <cstring>

namespace standin {
namespace {

constexpr char kDigits[] = "0123456789abcdef";

int hexValue(char digit) {
  const char* found = digit ? strchr(kDigits, tolower(static_cast<unsigned char>(digit))) : nullptr;
  return found ? static_cast<int>(found - kDigits) : -1;
}

/// Appends one character of a value: folded, and escaped if it could be read as a separator or as an edge
/// blank.
void appendLiteral(std::string& key, unsigned char c) {
  if (c == ' ' || isalnum(c) || c >= 0x80) {
    key += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : static_cast<char>(c);
    return;
  }
  key += '\\';
  key += kDigits[c >> 4];
  key += kDigits[c & 15];
}

/// Takes the blanks off the end of `key`, though none before `floor`, where escaped ones end.
void trimBlanks(std::string& key, size_t floor) {
  while (key.size() > floor && key.back() == ' ') key.pop_back();
}

bool isSeparator(char c) {
  return c == ',' || c == ';' || c == '=' || c == '+';
}

}  // namespace

std::string dnKey(std::string_view dn) {
  std::string key;
  key.reserve(dn.size() + 16);
  size_t floor = 0;
  bool atStart = true;
  bool inValue = false;
  for (size_t i = 0; i < dn.size(); ++i) {
    char c = dn[i];
    if (atStart && c == ' ') continue;
    // Within a value an equals sign is a character like any other.
    if (isSeparator(c) && !(c == '=' && inValue)) {
      trimBlanks(key, floor);
      key += c == ';' ? ',' : c;
      floor = key.size();
      atStart = true;
      inValue = c == '=';
      continue;
    }
    atStart = false;
    if (c != '\\' || i + 1 == dn.size()) {
      appendLiteral(key, static_cast<unsigned char>(c));
      continue;
    }
    int high = hexValue(dn[i + 1]);
    int low = i + 2 < dn.size() ? hexValue(dn[i + 2]) : -1;
    bool pair = high >= 0 && low >= 0;
    appendLiteral(key,
                  pair ? static_cast<unsigned char>(high * 16 + low) : static_cast<unsigned char>(dn[i + 1]));
    i += pair ? 2 : 1;
    floor = key.size();
  }
  trimBlanks(key, floor);
  return key;
}

std::string_view parentKey(std::string_view key) {
  size_t comma = key.find(',');
  return comma == std::string_view::npos ? std::string_view() : key.substr(comma + 1);
}

bool isWithin(std::string_view key, std::string_view base) {
  if (base.empty() || key == base) return true;
  return key.size() > base.size() && key.substr(key.size() - base.size()) == base &&
         key[key.size() - base.size() - 1] == ',';
}

}  // namespace standin
