/// The words after a command's name: options, their values, and operands.
#pragma once

#include <string>
#include <vector>

namespace cli {

/// A command takes its options first, then its operands, and ends with done(), which refuses the rest. "--"
/// ends the options. Every failure is a UsageError.
class Arguments {
 public:
  explicit Arguments(std::vector<std::string> words);

  /// Takes the flag and returns whether it was there.
  bool flag(const std::string& name);
  /// Takes an option with its value ("--name VALUE" or "--name=VALUE") and returns whether it was there.
  /// Otherwise `value` keeps what it has.
  bool option(const std::string& name, std::string& value);
  /// The same for the first word only.
  bool leadingFlag(const std::string& name);
  bool leadingOption(const std::string& name, std::string& value);
  /// Takes an option whose value is a whole number from 0 to INT_MAX; returns `fallback` if it is not there.
  int number(const std::string& name, int fallback);

  /// Takes the next operand; `what` names it in the message if there is none.
  std::string operand(const std::string& what);
  /// Takes the first word, which selects what the command does. Options may follow it.
  std::string action(const std::string& what);
  bool hasOperand();
  /// Takes all remaining operands.
  std::vector<std::string> operands();
  /// Refuses anything that is left.
  void done();

 private:
  using Words = std::vector<std::string>;

  bool takeOption(Words::iterator word, const std::string& name, std::string& value);
  void refuseOptions();

  Words m_words;
  Words m_afterMark;  // after "--"
};

/// Reads a decimal number of at most 32 bits into `number`; false if the text is anything else.
bool readNumber(const std::string& text, unsigned& number);

}  // namespace cli
