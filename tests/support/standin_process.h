/// The stand-in as a child process of a test.
#pragma once

#include <string>
#include <vector>

/// A directory for sockets and files that lasts as long as this object.
class ScratchDirectory {
 public:
  ScratchDirectory();
  ~ScratchDirectory();
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;

  std::string path(const std::string& name) const { return m_path + "/" + name; }

 private:
  std::string m_path;
};

/// A stand-in in the foreground, started with the sample directory and ready for connections. Ended with this
/// object, by SIGTERM.
class StandinProcess {
 public:
  /// `arguments` go behind those for the socket and the sample; with `ldif` that file takes the sample's
  /// place.
  explicit StandinProcess(const std::vector<std::string>& arguments = {}, const std::string& ldif = "");
  ~StandinProcess();
  StandinProcess(const StandinProcess&) = delete;
  StandinProcess& operator=(const StandinProcess&) = delete;

  const std::string& socket() const { return m_socket; }
  /// Ends it as a crash would; its socket stays behind.
  void kill();
  /// Another one takes its place at the same socket, with other arguments behind those for socket and sample.
  void restart(const std::vector<std::string>& arguments);
  /// Waits for the end, and tells the exit status; -1 if it ended by a signal.
  int wait();

 private:
  void launch(const std::vector<std::string>& arguments);

  ScratchDirectory m_scratch;
  std::string m_socket;
  std::vector<std::string> m_base;
  int m_pid = -1;
};
