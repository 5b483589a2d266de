#include "cli/arguments.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <utility>

#include "cli/exit_status.h"

namespace cli {

namespace {

bool isOption(const std::string& word) {
  return word.size() > 1 && word[0] == '-';
}

}  // namespace

bool readNumber(const std::string& text, unsigned& number) {
  if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos) return false;
  errno = 0;
  const unsigned long value = strtoul(text.c_str(), nullptr, 10);
  if (errno != 0 || value > UINT_MAX) return false;
  number = static_cast<unsigned>(value);
  return true;
}

Arguments::Arguments(std::vector<std::string> words) : m_words(std::move(words)) {
  const auto mark = std::find(m_words.begin(), m_words.end(), "--");
  if (mark == m_words.end()) return;
  m_afterMark.assign(mark + 1, m_words.end());
  m_words.erase(mark, m_words.end());
}

bool Arguments::flag(const std::string& name) {
  const auto word = std::find(m_words.begin(), m_words.end(), name);
  if (word == m_words.end()) return false;
  m_words.erase(word);
  return true;
}

bool Arguments::takeOption(Words::iterator word, const std::string& name, std::string& value) {
  if (word->compare(0, name.size() + 1, name + "=") == 0) {
    value = word->substr(name.size() + 1);
    m_words.erase(word);
    return true;
  }
  if (*word != name) return false;
  if (word + 1 == m_words.end()) throw UsageError("option " + name + " needs a value");
  value = *(word + 1);
  m_words.erase(word, word + 2);
  return true;
}

bool Arguments::option(const std::string& name, std::string& value) {
  for (auto word = m_words.begin(); word != m_words.end(); ++word)
    if (takeOption(word, name, value)) return true;
  return false;
}

bool Arguments::leadingFlag(const std::string& name) {
  if (m_words.empty() || m_words.front() != name) return false;
  m_words.erase(m_words.begin());
  return true;
}

bool Arguments::leadingOption(const std::string& name, std::string& value) {
  return !m_words.empty() && takeOption(m_words.begin(), name, value);
}

int Arguments::number(const std::string& name, int fallback) {
  std::string text;
  if (!option(name, text)) return fallback;
  unsigned value = 0;
  if (!readNumber(text, value) || value > INT_MAX)
    throw UsageError("option " + name + " needs a whole number, not '" + text + "'");
  return static_cast<int>(value);
}

void Arguments::refuseOptions() {
  const auto word = std::find_if(m_words.begin(), m_words.end(), isOption);
  if (word != m_words.end()) throw UsageError("unknown option " + *word);
}

std::string Arguments::action(const std::string& what) {
  if (m_words.empty()) throw UsageError(what + " is missing");
  if (isOption(m_words.front())) throw UsageError("unknown option " + m_words.front() + " before " + what);
  std::string word = m_words.front();
  m_words.erase(m_words.begin());
  return word;
}

bool Arguments::hasOperand() {
  refuseOptions();
  return !m_words.empty() || !m_afterMark.empty();
}

std::string Arguments::operand(const std::string& what) {
  if (!hasOperand()) throw UsageError(what + " is missing");
  std::vector<std::string>& source = m_words.empty() ? m_afterMark : m_words;
  std::string word = source.front();
  source.erase(source.begin());  // cppcheck-suppress mismatchingContainerIterator ; it is one vector
  return word;
}

std::vector<std::string> Arguments::operands() {
  refuseOptions();
  std::vector<std::string> all = std::move(m_words);
  all.insert(all.end(), m_afterMark.begin(), m_afterMark.end());
  m_words.clear();
  m_afterMark.clear();
  return all;
}

void Arguments::done() {
  if (hasOperand()) throw UsageError("unexpected '" + operand("") + "'");
}

}  // namespace cli
