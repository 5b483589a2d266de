/// Passwords on their way into the tool: from a prompt that shows nothing or from a descriptor, never from
/// argv.
#pragma once

#include <fokrazo/shredder.h>

namespace cli {

class Arguments;

/// Where a command takes its passwords from.
class SecretSource {
 public:
  /// Takes --password-fd N, if it is there. @throws UsageError
  explicit SecretSource(Arguments& arguments);

  /// The next line of the descriptor, or what is typed behind `prompt`; without its end of line.
  /// @throws std::runtime_error nothing can be read.
  vesk::Shredder read(const char* prompt);

 private:
  int m_descriptor = -1;
};

}  // namespace cli
