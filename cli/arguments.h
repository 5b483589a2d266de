/// The arguments after a command's name: options, their values, and operands.
#pragma once

#include <string>
#include <vector>

namespace cli {

/// A command takes its options first, then its operands, and then calls done(). "--" ends the options. Every
/// failure is a UsageError.
class Arguments {
 public:
  explicit Arguments(std::vector<std::string> words);

  /// Takes the flag. Returns whether it was present.
  bool flag(const std::string& name);
  /// Takes an option with its value ("--name VALUE" or "--name=VALUE"). Returns whether it was present; if
  /// not, `value` is unchanged.
  bool option(const std::string& name, std::string& value);
  /// The same for the first word only.
  bool leadingFlag(const std::string& name);
  bool leadingOption(const std::string& name, std::string& value);
  /// Takes an option whose value is a whole number from 0 to INT_MAX; returns `fallback` if it is missing.
  int number(const std::string& name, int fallback);

  /// Takes the next operand; `what` is its name in the error message if it is missing.
  std::string operand(const std::string& what);
  /// Takes the first word, the subcommand. Options may follow it.
  std::string action(const std::string& what);
  bool hasOperand();
  /// Takes all remaining operands.
  std::vector<std::string> operands();
  /// Throws if any argument is left.
  void done();

 private:
  using Words = std::vector<std::string>;

  bool takeOption(Words::iterator word, const std::string& name, std::string& value);
  void refuseOptions();

  Words m_words;
  Words m_afterMark;  // after "--"
};

/// Reads a decimal number of at most 32 bits into `number`; false for any other text.
bool readNumber(const std::string& text, unsigned& number);

}  // namespace cli
