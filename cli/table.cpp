#include "cli/table.h"

#include <algorithm>
#include <cwchar>

#include <fokrazo/utf8.h>

namespace cli {

namespace {

constexpr size_t kGap = 2;

// The columns that a terminal needs for the text.
size_t widthOf(const std::string& text) {
  size_t width = 0;
  for (size_t i = 0; i < text.size();) {
    const vesk::Utf8Character character = vesk::utf8At(text, i);
    const int columns = wcwidth(static_cast<wchar_t>(character.code));
    width += columns >= 0 ? static_cast<size_t>(columns) : 1;
    i += std::max<size_t>(character.length, 1);
  }
  return width;
}

}  // namespace

std::string Table::text() const {
  std::vector<size_t> widths(m_rows.front().size());
  for (const auto& row : m_rows)
    for (size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], widthOf(row[i]));
  std::string out;
  for (const auto& row : m_rows) {
    std::string line;
    for (size_t i = 0; i < row.size(); ++i)
      line += row[i] + std::string(widths[i] - widthOf(row[i]) + kGap, ' ');
    out += line.substr(0, line.find_last_not_of(' ') + 1) + '\n';
  }
  return out;
}

}  // namespace cli
