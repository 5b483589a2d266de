#include "cli/doctor/finding.h"

#include <utility>

namespace cli {

Findings::Findings(std::string check) : m_check(std::move(check)) {}

void Findings::ok(const std::string& text) {
  add(Finding::Ok, text, "", "");
}

void Findings::warn(const std::string& text, const std::string& advice, const std::string& command) {
  add(Finding::Warning, text, advice, command);
}

void Findings::problem(const std::string& text, const std::string& advice, const std::string& command) {
  add(Finding::Problem, text, advice, command);
}

void Findings::add(Finding::State state, const std::string& text, const std::string& advice,
                   const std::string& command) {
  m_findings.push_back({state, m_check, text, advice, command});
}

}  // namespace cli
