/// The command line: options, their values, and operands.
#pragma once

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "cli/option.h"

namespace cli {

/// Options may stand anywhere; "--" ends them, and a lone "-" is an operand. A command takes its options and
/// its operands, and then calls done(). Every failure is a UsageError.
class Arguments {
 public:
  /// Finds an option by its name or, if it is one letter, by that; null if there is none.
  using Finder = std::function<const Option*(const std::string& name)>;

  Arguments(const std::vector<std::string>& words, const Finder& find);

  /// Takes the flag. Returns whether it was present.
  bool flag(const std::string& name);
  /// Takes an option with its value, the last one if it was given more than once. Returns whether it was
  /// present; if not, `value` is unchanged.
  bool option(const std::string& name, std::string& value);
  /// Takes an option whose value is a whole number from 0 to INT_MAX; returns `fallback` if it is missing.
  int number(const std::string& name, int fallback);

  /// Takes the next operand; `what` is its name in the error message if it is missing.
  std::string operand(const std::string& what);
  bool hasOperand() const { return !m_operands.empty(); }
  /// Takes all remaining operands.
  std::vector<std::string> operands();
  /// Throws if an option is left that does not belong to `options`, those of the command `name`.
  void requireOptionsOf(const std::string& name, const Options& options) const;
  /// Throws if an operand is left.
  void done() const;

 private:
  struct Given {
    const Option* option;
    std::string value;
  };
  using Words = std::vector<std::string>;

  void takeOption(Words::const_iterator& word, Words::const_iterator end, const Finder& find);

  std::vector<Given> m_options;
  std::deque<std::string> m_operands;
};

/// Reads a decimal number of at most 32 bits into `number`; false for any other text.
bool readNumber(const std::string& text, unsigned& number);

}  // namespace cli
