#include "cli/did_you_mean.h"

#include <algorithm>
#include <utility>

#include <fokrazo/strutil.h>

namespace cli {

namespace {

constexpr size_t kMostEdits = 3;

size_t difference(size_t a, size_t b) {
  return a > b ? a - b : b - a;
}

// The optimal string alignment distance. Row i of its matrix is about the first i bytes of `a`; only the last
// three rows are kept.
size_t editsBetween(const std::string& a, const std::string& b) {
  std::vector<size_t> beforeLast;
  std::vector<size_t> last(b.size() + 1);
  for (size_t j = 0; j <= b.size(); ++j) last[j] = j;
  for (size_t i = 1; i <= a.size(); ++i) {
    std::vector<size_t> row(b.size() + 1, i);
    for (size_t j = 1; j <= b.size(); ++j) {
      const size_t replaced = last[j - 1] + (a[i - 1] != b[j - 1] ? 1 : 0);
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, replaced});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
        row[j] = std::min(row[j], beforeLast[j - 2] + 1);
    }
    beforeLast = std::move(last);
    last = std::move(row);
  }
  return last.back();
}

}  // namespace

std::string closest(const std::string& word, const std::vector<std::string>& candidates) {
  const std::string wanted = vesk::lower(word);
  size_t limit = std::min(word.size() / 3, kMostEdits);
  std::string best;
  for (const std::string& candidate : candidates) {
    if (difference(candidate.size(), word.size()) > limit) continue;
    const size_t edits = editsBetween(wanted, vesk::lower(candidate));
    if (edits > limit || (edits == limit && !best.empty())) continue;
    limit = edits;
    best = candidate;
  }
  return best;
}

}  // namespace cli
