/// Rows of text in aligned columns.
#pragma once

#include <string>
#include <vector>

namespace cli {

class Table {
 public:
  explicit Table(std::vector<std::string> titles) { m_rows.push_back(std::move(titles)); }

  /// Requires: as many cells as there are titles, in UTF-8.
  void add(std::vector<std::string> cells) { m_rows.push_back(std::move(cells)); }
  /// The titles and all rows, each with a newline.
  std::string text() const;

 private:
  std::vector<std::vector<std::string>> m_rows;
};

}  // namespace cli
