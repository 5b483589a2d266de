/// What the checks of `fokrazo doctor` find.
#pragma once

#include <string>
#include <vector>

namespace cli {

struct Finding {
  enum State : int {
    Ok,       // correct
    Warning,  // works, but an administrator should know
    Problem,  // does not work, or not as intended
  };

  State state;
  std::string check;    // what was examined, one word
  std::string text;     // what was found
  std::string advice;   // what to do about it; empty if Ok
  std::string command;  // the next command to type; empty if Ok
};

/// The findings of one check.
class Findings {
 public:
  explicit Findings(std::string check);

  void ok(const std::string& text);
  /// Add what is not ok. Text from outside is escaped, words of the command are quoted: see shellWord.
  void warn(const std::string& text, const std::string& advice, const std::string& command);
  void problem(const std::string& text, const std::string& advice, const std::string& command);
  void add(Finding::State state, const std::string& text, const std::string& advice,
           const std::string& command);

  bool empty() const { return m_findings.empty(); }
  auto begin() const { return m_findings.begin(); }
  auto end() const { return m_findings.end(); }

 private:
  std::string m_check;
  std::vector<Finding> m_findings;
};

}  // namespace cli
