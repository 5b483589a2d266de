#include "cli/doctor/shell_word.h"

#include <algorithm>
#include <cstdio>

#include <fokrazo/ascii.h>
#include "cli/shown.h"

namespace cli {

namespace {

bool isPlain(char c) {
  return vesk::isAsciiAlnum(c) || std::string("_-./:=@%+,").find(c) != std::string::npos;
}

std::string escaped(char c) {
  char text[8];
  if (c == '\'' || c == '\\')
    snprintf(text, sizeof text, "\\%c", c);
  else if (static_cast<unsigned char>(c) < 0x20 || static_cast<unsigned char>(c) >= 0x7f)
    snprintf(text, sizeof text, "\\%03o", static_cast<unsigned char>(c));
  else
    snprintf(text, sizeof text, "%c", c);
  return text;
}

}  // namespace

std::string shellWord(const std::string& text) {
  if (!text.empty() && std::all_of(text.begin(), text.end(), isPlain)) return text;
  const bool isHarmless = shown(text) == text;
  std::string word = isHarmless ? "'" : "$'";
  for (const char c : text) word += !isHarmless ? escaped(c) : c == '\'' ? "'\\''" : std::string(1, c);
  return word + '\'';
}

}  // namespace cli
