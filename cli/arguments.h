/// The words behind a command's name: options, their values, and operands.
#pragma once

#include <string>
#include <vector>

namespace cli {

/// A command takes the options that it knows, then its operands, and ends with done(), which refuses what is
/// left. "--" ends the options. All failures are UsageError.
class Arguments {
 public:
  explicit Arguments(std::vector<std::string> words);

  /// Takes the flag, if it is there.
  bool flag(const std::string& name);
  /// Takes an option with its value ("--name VALUE" or "--name=VALUE") into `value`, if it is there.
  bool option(const std::string& name, std::string& value);
  /// As flag and option, of the first word alone.
  bool leadingFlag(const std::string& name);
  bool leadingOption(const std::string& name, std::string& value);
  /// Takes a whole number of 0 or more that an int can hold; `fallback` if the option is not there.
  int number(const std::string& name, int fallback);

  /// Takes the next operand; `what` names it in the complaint if there is none.
  std::string operand(const std::string& what);
  /// Takes the first word, which says what the rest means; options may follow it.
  std::string action(const std::string& what);
  bool hasOperand();
  /// Takes all operands that are left.
  std::vector<std::string> operands();
  /// Complains about anything that is left.
  void done();

 private:
  using Words = std::vector<std::string>;

  bool takeOption(Words::iterator word, const std::string& name, std::string& value);
  void refuseOptions();

  Words m_words;
  Words m_behindMark;  // behind "--"
};

/// Reads a whole decimal number of at most 32 bits; false for anything else.
bool readNumber(const std::string& text, unsigned& number);

}  // namespace cli
