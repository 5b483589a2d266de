#include "cli/option.h"

#include <algorithm>

namespace cli {

namespace {

constexpr size_t kHelpColumn = 19;

// "  -h, --help" or "  --by KIND"
std::string nameOf(const Option& option) {
  std::string name = "  ";
  if (option.letter != '\0') name += std::string("-") + option.letter + ", ";
  name += option.name;
  return option.value ? name + ' ' + option.value : name;
}

// Continues each further line of `text` in the column of the first one.
std::string indented(const std::string& text) {
  std::string out;
  for (const char c : text) {
    out += c;
    if (c == '\n') out.append(kHelpColumn, ' ');
  }
  return out;
}

}  // namespace

std::string helpOf(const Options& options) {
  std::string lines;
  for (const Option& option : options) {
    std::string line = nameOf(option);
    if (line.size() >= kHelpColumn) line += '\n' + std::string(kHelpColumn, ' ');
    line.resize(std::max(line.size(), kHelpColumn), ' ');
    lines += line + indented(option.help) + '\n';
  }
  return lines;
}

}  // namespace cli
