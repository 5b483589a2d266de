#include "cli/shown.h"

#include <algorithm>

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
  std::string out = vesk::withoutTerminalControls(value);
  std::replace(out.begin(), out.end(), ':', '?');
  return out;
}

}  // namespace cli
