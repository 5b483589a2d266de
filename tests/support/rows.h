/// Tables of tests that are kept in text files.
#pragma once

#include <array>

#include "tests/support/prelude.h"
#include "tests/support/wire.h"

namespace testsupport {

/// The text with the control characters that its control pictures (U+2400 to U+241F) stand for, and the bytes
/// whose hexadecimal digits are between "⟨" and "⟩".
inline std::string withControls(std::string text) {
  for (size_t at; (at = text.find("⟨")) != std::string::npos;) {
    const size_t end = text.find("⟩", at);
    text.replace(at, end + 3 - at, hex(text.substr(at + 3, end - at - 3)));
  }
  for (size_t at = 0; (at = text.find("\xe2\x90", at)) != std::string::npos; ++at)
    text.replace(at, 3, 1, static_cast<char>(text[at + 2] - '\x80'));
  return text;
}

/// The rows of a table in a file below tests/: the lines after "[table]" up to an empty line, each with N
/// cells between bars. Lines that begin with "--" are comments.
template <size_t N>
std::vector<std::array<std::string, N>> rowsOf(const std::string& file, const std::string& table) {
  std::vector<std::array<std::string, N>> rows;
  std::ifstream lines(TEST_SOURCE_DIR "/tests/" + file);
  std::string line;
  while (std::getline(lines, line) && line != "[" + table + "]") {
  }
  while (std::getline(lines, line) && !line.empty()) {
    if (line.compare(0, 2, "--") == 0) continue;
    std::istringstream cells(line + "|");
    size_t count = 0;
    rows.emplace_back();
    for (std::string cell; std::getline(cells, cell, '|'); ++count)
      if (count < N) rows.back()[count] = withControls(cell);
    EXPECT_EQ(count, N) << line;
  }
  EXPECT_FALSE(rows.empty()) << table << " in " << file;
  return rows;
}

}  // namespace testsupport
