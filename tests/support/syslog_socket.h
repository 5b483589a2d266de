// The private world's syslog daemon: reads what programs send to /dev/log as fast as it arrives, so that
// logging never waits. Also: how a test configures the library and reads a log file.
#pragma once

#include <fokrazo/properties.h>
#include "tests/support/private_world.h"

using Texts = std::vector<std::string>;

struct SyslogLine {
  int priority;
  std::string sender;  // as in "program[12]"
  std::string text;
};

class SyslogSocket {
 public:
  // Requires the private world, because it replaces the machine's socket.
  SyslogSocket() : m_socket(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    if (!testsupport::inPrivateWorld()) abort();
    strcpy(m_name.sun_path, "/dev/log");
    unlink(m_name.sun_path);
    if (bind(m_socket, reinterpret_cast<const sockaddr*>(&m_name), sizeof m_name) != 0) abort();
    resume();
  }
  ~SyslogSocket() {
    pause();
    close(m_socket);
    unlink(m_name.sun_path);
  }

  // While paused, the kernel accepts a few lines; then logging blocks.
  void pause() {
    if (sendto(m_socket, "stop", 4, 0, reinterpret_cast<const sockaddr*>(&m_name), sizeof m_name) < 0)
      abort();
    m_reader.join();
  }
  void resume() { m_reader = std::thread(&SyslogSocket::read, this); }

  // The lines sent since the last call.
  std::vector<SyslogLine> take() {
    pause();
    std::vector<SyslogLine> lines;
    lines.swap(m_lines);
    resume();
    return lines;
  }
  Texts texts() {
    Texts texts;
    for (const SyslogLine& line : take()) texts.push_back(line.text);
    return texts;
  }

 private:
  void read() {
    char datagram[8192];
    for (ssize_t length; (length = recv(m_socket, datagram, sizeof datagram, 0)) > 0;) {
      std::string line(datagram, length);
      while (!line.empty() && (line.back() == '\n' || line.back() == '\0')) line.pop_back();
      if (line == "stop") return;
      // "<38>Jan  1 00:00:00 program[12]: text"
      const size_t sender = line.find('>') + 1 + strlen("Jan  1 00:00:00 ");
      const size_t text = line.find(": ", sender);
      m_lines.push_back({atoi(line.c_str() + 1), line.substr(sender, text - sender), line.substr(text + 2)});
    }
  }

  const int m_socket;
  sockaddr_un m_name{AF_UNIX, {}};
  std::thread m_reader;
  std::vector<SyslogLine> m_lines;  // owned by the reader, or by the caller while it is paused
};

// Makes `text` the configuration; it takes effect at once. Requires the private world.
inline void configure(const std::string& text) {
  std::ofstream("/etc/velmora/velmora.conf") << text;
  Props(false, true);
}

// The lines of a log file without their prefix. A message that ends with a newline of its own leaves an empty
// one.
inline Texts linesOf(const std::string& path) {
  Texts lines;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);)
    lines.push_back(line.empty() ? line : line.substr(line.find("]: ") + 3));
  return lines;
}
