/// Options of the command line, as data.
#pragma once

#include <cstddef>
#include <string>

namespace cli {

/// One option. The same name takes a value in all commands, or in none.
struct Option {
  const char* name;    // "--by"
  const char* value;   // the value's name in the help; null if there is none
  const char* help;    // what it does; a newline continues on the next line
  char letter = '\0';  // the short form; '\0' if there is none
};

/// A table of options.
struct Options {
  constexpr Options() = default;
  template <size_t N>
  constexpr Options(const Option (&table)[N]) : first(table), count(N) {}

  const Option* begin() const { return first; }
  const Option* end() const { return first + count; }

  const Option* first = nullptr;
  size_t count = 0;
};

/// The lines of the help: each option with its value and what it does.
std::string helpOf(const Options& options);

}  // namespace cli
