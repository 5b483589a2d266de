#include "standin/dn_key.h"

#include <cstring>

#include <fokrazo/ascii.h>

namespace standin {
namespace {

constexpr char kDigits[] = "0123456789abcdef";

int hexValue(char digit) {
  const char* found = digit ? strchr(kDigits, vesk::asciiLower(digit)) : nullptr;
  return found ? static_cast<int>(found - kDigits) : -1;
}

bool isSeparator(char c) {
  return c == ',' || c == ';' || c == '=' || c == '+';
}

/// The text between two separators, unescaped.
class Part {
 public:
  /// Drops leading and trailing blanks unless they were escaped.
  void add(char c, bool wasEscaped) {
    if (c == ' ' && !wasEscaped && m_text.empty()) return;
    m_text += c;
    if (c != ' ' || wasEscaped) m_end = m_text.size();
  }

  /// Appends the part to a key and clears it for the next one.
  void moveTo(std::string& key) {
    m_text.resize(m_end);
    size_t first = m_text.find_first_not_of(' '), last = m_text.find_last_not_of(' ');
    for (size_t i = 0; i < m_text.size(); ++i) appendLiteral(key, m_text[i], i < first || i > last);
    m_text.clear();
    m_end = 0;
  }

 private:
  /// Appends one character in lower case, escaped if it could be a separator or is a leading or trailing
  /// blank.
  static void appendLiteral(std::string& key, char c, bool isAtEdge) {
    const auto byte = static_cast<unsigned char>(c);
    if ((c == ' ' && !isAtEdge) || vesk::isAsciiAlnum(c) || byte >= 0x80) {
      key += vesk::asciiLower(c);
      return;
    }
    key += '\\';
    key += kDigits[byte >> 4];
    key += kDigits[byte & 15];
  }

  std::string m_text;
  size_t m_end = 0;  // after the last character other than an unescaped blank
};

}  // namespace

std::string dnKey(std::string_view dn) {
  std::string key;
  key.reserve(dn.size() + 16);
  Part part;
  bool inValue = false;
  for (size_t i = 0; i < dn.size(); ++i) {
    char c = dn[i];
    if (isSeparator(c) && !(c == '=' && inValue)) {
      // An equals sign within a value is not a separator.
      part.moveTo(key);
      key += c == ';' ? ',' : c;
      inValue = c == '=';
    } else if (c != '\\' || i + 1 == dn.size()) {
      part.add(c, false);
    } else {
      int high = hexValue(dn[i + 1]);
      int low = i + 2 < dn.size() ? hexValue(dn[i + 2]) : -1;
      bool isPair = high >= 0 && low >= 0;
      part.add(isPair ? static_cast<char>(high * 16 + low) : dn[i + 1], true);
      i += isPair ? 2 : 1;
    }
  }
  part.moveTo(key);
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
