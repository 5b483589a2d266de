#include "cli/words.h"

#include "cli/failure.h"

namespace cli {

namespace {

constexpr char kBlanks[] = " \t\r";

class Splitter {
 public:
  explicit Splitter(const std::string& line) : m_line(line) {}

  std::vector<std::string> split() {
    while ((m_at = m_line.find_first_not_of(kBlanks, m_at)) != std::string::npos) m_words.push_back(word());
    return std::move(m_words);
  }

 private:
  bool atEnd() const { return m_at == m_line.size(); }

  std::string word() {
    std::string word;
    while (!atEnd() && std::string(kBlanks).find(m_line[m_at]) == std::string::npos) {
      const char c = m_line[m_at];
      if (c == '\'' || c == '"')
        word += quoted();
      else
        word += character();
    }
    return word;
  }

  // One character, or the one after a backslash.
  char character() {
    if (m_line[m_at] == '\\' && ++m_at == m_line.size()) throw UsageError("a backslash ends the line");
    return m_line[m_at++];
  }

  std::string quoted() {
    const char quote = m_line[m_at++];
    std::string text;
    while (!atEnd() && m_line[m_at] != quote) text += quote == '"' ? character() : m_line[m_at++];
    if (atEnd()) throw UsageError("a quote is not closed");
    ++m_at;
    return text;
  }

  const std::string& m_line;
  size_t m_at = 0;
  std::vector<std::string> m_words;
};

}  // namespace

std::vector<std::string> splitWords(const std::string& line) {
  return Splitter(line).split();
}

}  // namespace cli
