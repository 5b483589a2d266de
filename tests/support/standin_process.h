/// The stand-in as a child process of a test.
#pragma once

#include "tests/support/prelude.h"

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

/// A stand-in in the foreground, serving the sample directory and ready for connections. The destructor ends
/// it with SIGTERM and expects exit status 0.
///
/// The child cannot outlive its test: the kernel kills it when the thread that launched it ends, so launch it
/// from the main thread or join in time. It inherits none of the test's streams, so it cannot keep a runner
/// waiting for the end of the test's output; its standard error is shown if it ends other than with status 0.
class StandinProcess {
 public:
  /// Appends `arguments` to the socket and the sample; `ldif` names a file to serve instead of the sample.
  explicit StandinProcess(const std::vector<std::string>& arguments = {}, const std::string& ldif = "");
  ~StandinProcess();
  StandinProcess(const StandinProcess&) = delete;
  StandinProcess& operator=(const StandinProcess&) = delete;

  const std::string& socket() const { return m_socket; }
  int pid() const { return m_pid; }
  /// What it has written to its standard error.
  std::string errors() const;
  void signal(int number) const;
  /// Ends it as a crash would; the socket file stays.
  void kill();
  /// Kills it and launches another one on the same socket, with `arguments` in place of the earlier ones.
  void restart(const std::vector<std::string>& arguments);
  /// Waits for the end. Returns the exit status, or -1 if a signal ended it.
  int wait();

 private:
  void launch(const std::vector<std::string>& arguments);

  ScratchDirectory m_scratch;
  std::string m_socket;
  std::vector<std::string> m_base;
  int m_pid = -1;
};
