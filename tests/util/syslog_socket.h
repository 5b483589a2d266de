// The private world's syslog daemon: reads what programs send to /dev/log, as fast as it comes.
#pragma once

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "util/include/properties.h"

struct SyslogLine {
  int priority;
  std::string sender;  // as in "program[12]"
  std::string text;
};

class SyslogSocket {
 public:
  SyslogSocket() {
    unlink(address().sun_path);
    m_socket = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const sockaddr_un name = address();
    if (bind(m_socket, reinterpret_cast<const sockaddr*>(&name), sizeof name) != 0) abort();
    resume();
  }
  ~SyslogSocket() {
    pause();
    ::close(m_socket);
    unlink(address().sun_path);
  }

  // While paused the kernel takes some lines, and then whoever logs waits.
  void pause() {
    send(kStop);
    m_reader.join();
  }
  void resume() { m_reader = std::thread(&SyslogSocket::read, this); }

  // What has been sent up to now.
  std::vector<SyslogLine> take() {
    pause();
    std::vector<SyslogLine> lines;
    lines.swap(m_lines);
    resume();
    return lines;
  }
  std::vector<std::string> texts() {
    std::vector<std::string> texts;
    for (const SyslogLine& line : take()) texts.push_back(line.text);
    return texts;
  }

 private:
  static constexpr char kStop[] = "stop";

  static sockaddr_un address() {
    sockaddr_un name{};
    name.sun_family = AF_UNIX;
    strcpy(name.sun_path, "/dev/log");
    return name;
  }
  static void send(const char* text) {
    const int sender = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const sockaddr_un name = address();
    if (sendto(sender, text, strlen(text), 0, reinterpret_cast<const sockaddr*>(&name), sizeof name) < 0)
      abort();
    ::close(sender);
  }

  void read() {
    char datagram[8192];
    for (ssize_t length; (length = recv(m_socket, datagram, sizeof datagram, 0)) > 0;) {
      std::string line(datagram, length);
      while (!line.empty() && (line.back() == '\n' || line.back() == '\0')) line.pop_back();
      if (line == kStop) return;
      m_lines.push_back(parse(line));
    }
  }

  // "<38>Jan  1 00:00:00 program[12]: text"
  static SyslogLine parse(const std::string& line) {
    const size_t sender = line.find('>') + 1 + strlen("Jan  1 00:00:00 ");
    const size_t text = line.find(": ", sender);
    return {atoi(line.c_str() + 1), line.substr(sender, text - sender), line.substr(text + 2)};
  }

  int m_socket;
  std::thread m_reader;
  std::vector<SyslogLine> m_lines;  // the reader's, or the caller's while it is paused
};

// Makes `text` the configuration, which takes effect at once.
inline void configure(const std::string& text) {
  std::ofstream("/etc/velmora/velmora.conf") << text;
  Props(false, true);
}

inline std::string contentOf(const std::string& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

// Lines of a log file without their prefix.
inline std::vector<std::string> linesOf(const std::string& path) {
  std::vector<std::string> lines;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) lines.push_back(line.substr(line.find("]: ") + 3));
  return lines;
}
