#include "cli/secret.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <stdexcept>
#include <string>

#include "cli/arguments.h"
#include "cli/exit_status.h"

namespace cli {

namespace {

// No password is as long; it bounds what a wrong descriptor can feed us.
constexpr size_t kLongestPassword = 4096;

// Reads byte by byte, so that what follows the line stays for the next reader. The room is reserved before
// the first byte, so that no copy is left behind by growth.
vesk::Shredder readLine(int descriptor) {
  std::string empty;
  vesk::Shredder line(empty);
  line.reserve(kLongestPassword);
  for (;;) {
    char c = 0;
    const ssize_t count = read(descriptor, &c, 1);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw std::runtime_error(std::string("the password cannot be read: ") + strerror(errno));
    if (count == 0 && line.empty()) throw std::runtime_error("no password given");
    if (count == 0 || c == '\n') return line;
    if (line.size() == kLongestPassword) throw std::runtime_error("the password is too long");
    line.push_back(c);
  }
}

// The terminal with its echo off, for as long as this lives.
class SilentTerminal {
 public:
  explicit SilentTerminal(int descriptor) : m_descriptor(descriptor) {
    if (tcgetattr(m_descriptor, &m_before) != 0) throw std::runtime_error("standard input is no terminal");
    termios silent = m_before;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    tcsetattr(m_descriptor, TCSAFLUSH, &silent);
  }
  ~SilentTerminal() { tcsetattr(m_descriptor, TCSAFLUSH, &m_before); }
  SilentTerminal(const SilentTerminal&) = delete;
  SilentTerminal& operator=(const SilentTerminal&) = delete;

 private:
  int m_descriptor;
  termios m_before{};
};

// The terminal of the process, closed again at the end.
class Terminal {
 public:
  Terminal() : m_descriptor(open("/dev/tty", O_RDWR | O_CLOEXEC)) {
    if (m_descriptor < 0) throw std::runtime_error("no terminal to ask for the password; use --password-fd");
  }
  ~Terminal() { close(m_descriptor); }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  int descriptor() const { return m_descriptor; }
  void write(const char* text) const {
    if (::write(m_descriptor, text, strlen(text)) < 0)
      throw std::runtime_error("the terminal cannot be written");
  }

 private:
  int m_descriptor;
};

}  // namespace

SecretSource::SecretSource(Arguments& arguments) {
  const unsigned none = UINT_MAX;
  const unsigned number = arguments.number("--password-fd", none);
  if (number == none) return;
  if (number > INT_MAX || fcntl(static_cast<int>(number), F_GETFD) < 0)
    throw UsageError("descriptor " + std::to_string(number) + " is not open");
  m_descriptor = static_cast<int>(number);
}

vesk::Shredder SecretSource::read(const char* prompt) {
  if (m_descriptor >= 0) return readLine(m_descriptor);
  Terminal terminal;
  terminal.write(prompt);
  SilentTerminal silent(terminal.descriptor());
  vesk::Shredder secret = readLine(terminal.descriptor());
  terminal.write("\n");
  return secret;
}

}  // namespace cli
