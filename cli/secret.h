/// Passwords: from a prompt without echo or from a descriptor, never from the command line.
#pragma once

#include <fokrazo/shredder.h>

namespace cli {

class Arguments;

/// The source of a command's passwords.
class SecretSource {
 public:
  /// Takes the option --password-fd N, if present. @throws UsageError
  explicit SecretSource(Arguments& arguments);

  /// Returns the next line of the descriptor, or what is typed at `prompt`, without the newline.
  /// @throws std::runtime_error nothing can be read
  vesk::Shredder read(const char* prompt);
  /// The same for a new password, which is typed twice. @throws Failure the two differ
  vesk::Shredder readNew(const char* prompt, const char* promptAgain);

 private:
  int m_descriptor = -1;
};

}  // namespace cli
