#include "cli/secret.h"

#include <bsd/readpassphrase.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

#include "cli/arguments.h"
#include "cli/failure.h"

namespace cli {

namespace {

// Longer than any password. Bounds the read from a wrong descriptor.
constexpr size_t kLongestPassword = 4096;

// Reads byte by byte, to leave the next line unread. Reserves the memory first, because growth would leave
// copies.
vesk::Shredder readLine(int descriptor) {
  vesk::Shredder line;
  line.reserve(kLongestPassword);
  for (;;) {
    char c = 0;
    const ssize_t count = read(descriptor, &c, 1);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw std::runtime_error(std::string("the password cannot be read: ") + strerror(errno));
    if (count == 0 && line.empty()) throw std::runtime_error("there is no password to read");
    if (count == 0 || c == '\n') return line;
    if (line.size() == kLongestPassword) throw std::runtime_error("the password is too long");
    line.push_back(c);
  }
}

// Returns what the user types. readpassphrase restores the terminal before a signal is handled.
vesk::Shredder ask(const char* prompt) {
  vesk::Shredder typed(std::string(kLongestPassword + 2, '\0'));  // plus one excess byte and the terminator
  if (!readpassphrase(prompt, typed.data(), typed.size(), RPP_REQUIRE_TTY)) {
    if (errno == ENOTTY)
      throw std::runtime_error("there is no terminal to ask for the password; use --password-fd");
    throw std::runtime_error(std::string("the password cannot be read: ") + strerror(errno));
  }
  typed.resize(strlen(typed.c_str()));
  if (typed.size() > kLongestPassword) throw std::runtime_error("the password is too long");
  return typed;
}

}  // namespace

SecretSource::SecretSource(Arguments& arguments) {
  m_descriptor = arguments.number("--password-fd", m_descriptor);
  if (m_descriptor >= 0 && fcntl(m_descriptor, F_GETFD) < 0)
    throw UsageError("descriptor " + std::to_string(m_descriptor) + " is not open");
}

vesk::Shredder SecretSource::read(const char* prompt) {
  return m_descriptor >= 0 ? readLine(m_descriptor) : ask(prompt);
}

vesk::Shredder SecretSource::readNew(const char* prompt, const char* promptAgain) {
  vesk::Shredder typed = read(prompt);
  if (m_descriptor < 0 && ask(promptAgain) != typed)
    throw Failure(kFailed, "the two new passwords differ; nothing was changed");
  return typed;
}

}  // namespace cli
