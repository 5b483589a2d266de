#include "cli/arguments.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>

#include "cli/failure.h"

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

Arguments::Arguments(const Words& words, const Finder& find) {
  auto word = words.begin();
  for (; word != words.end() && *word != "--"; ++word) {
    if (isOption(*word))
      takeOption(word, words.end(), find);
    else
      m_operands.push_back(*word);
  }
  if (word != words.end()) m_operands.insert(m_operands.end(), word + 1, words.end());
}

// Reads "--name", "--name VALUE" or "--name=VALUE"; leaves `word` at the last word of the option.
void Arguments::takeOption(Words::const_iterator& word, Words::const_iterator end, const Finder& find) {
  const size_t mark = word->find('=');
  const std::string name = word->substr(0, mark);
  const Option* option = find(name);
  if (!option) throw UsageError("unknown option " + name);
  const bool hasValue = mark != std::string::npos;
  if (!option->value && hasValue) throw UsageError("option " + name + " takes no value");
  if (!option->value || hasValue) {
    m_options.push_back({option, hasValue ? word->substr(mark + 1) : ""});
    return;
  }
  if (word + 1 == end) throw UsageError("option " + name + " needs a value");
  m_options.push_back({option, *++word});
}

bool Arguments::flag(const std::string& name) {
  std::string none;
  return option(name, none);
}

bool Arguments::option(const std::string& name, std::string& value) {
  const auto isThis = [&](const Given& given) { return given.option->name == name; };
  const auto last = std::find_if(m_options.rbegin(), m_options.rend(), isThis);
  if (last == m_options.rend()) return false;
  value = last->value;
  m_options.erase(std::remove_if(m_options.begin(), m_options.end(), isThis), m_options.end());
  return true;
}

int Arguments::number(const std::string& name, int fallback) {
  std::string text;
  if (!option(name, text)) return fallback;
  unsigned value = 0;
  if (!readNumber(text, value) || value > INT_MAX)
    throw UsageError("option " + name + " needs a whole number, not '" + text + "'");
  return static_cast<int>(value);
}

std::string Arguments::operand(const std::string& what) {
  if (m_operands.empty()) throw UsageError(what + " is missing");
  std::string word = std::move(m_operands.front());
  m_operands.pop_front();
  return word;
}

std::vector<std::string> Arguments::operands() {
  std::vector<std::string> all(m_operands.begin(), m_operands.end());
  m_operands.clear();
  return all;
}

void Arguments::requireOptionsOf(const std::string& name, const Options& options) const {
  for (const Given& given : m_options) {
    const bool isKnown = std::any_of(options.begin(), options.end(), [&](const Option& option) {
      return std::string(option.name) == given.option->name;
    });
    if (!isKnown) throw UsageError(name + " takes no option " + given.option->name);
  }
}

void Arguments::done() const {
  if (!m_operands.empty()) throw UsageError("unexpected '" + m_operands.front() + "'");
}

}  // namespace cli
