#include "tests/standin/standin_process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include <gtest/gtest.h>

namespace {

const std::string kProgram = TEST_BINARY_DIR "/bin/brondalt-standin";
const std::string kSample = TEST_SOURCE_DIR "/standin/sample/";

struct Pipe {
  int ends[2];
  Pipe() {
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("pipe2");
  }
};

/// Starts the program with its standard output, and if given its standard error, on these descriptors.
pid_t start(std::vector<std::string> arguments, int output, int errors) {
  arguments.insert(arguments.begin(), kProgram);
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  pid_t pid = fork();
  if (pid != 0) return pid;
  dup2(output, STDOUT_FILENO);
  if (errors >= 0) dup2(errors, STDERR_FILENO);
  execv(kProgram.c_str(), pointers.data());
  _exit(127);
}

std::string readAll(int fd) {
  std::string text;
  char buffer[4096];
  for (ssize_t count; (count = read(fd, buffer, sizeof buffer)) > 0;) text.append(buffer, count);
  close(fd);
  return text;
}

int waitFor(pid_t pid) {
  int status = 0;
  return waitpid(pid, &status, 0) == pid && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

ScratchDirectory::ScratchDirectory() {
  char path[] = "/tmp/standin-XXXXXX";
  if (!mkdtemp(path)) throw std::runtime_error("mkdtemp");
  m_path = path;
}

ScratchDirectory::~ScratchDirectory() {
  std::filesystem::remove_all(m_path);
}

ProgramResult runStandin(const std::vector<std::string>& arguments) {
  Pipe output, errors;
  pid_t pid = start(arguments, output.ends[1], errors.ends[1]);
  close(output.ends[1]);
  close(errors.ends[1]);
  ProgramResult result;
  result.output = readAll(output.ends[0]);
  result.errors = readAll(errors.ends[0]);
  result.status = waitFor(pid);
  return result;
}

StandinProcess::StandinProcess(const std::vector<std::string>& arguments, const std::string& ldif)
    : m_socket(m_scratch.path("daemon")), m_base{"--foreground", "--socket", m_socket, "--ldif"} {
  if (ldif.empty()) {
    m_base.insert(m_base.end(), {kSample + "accounts.ldif", "--ldif", kSample + "roles.ldif"});
    m_base.insert(m_base.end(), {"--passwords", kSample + "passwords"});
  } else {
    m_base.push_back(ldif);
  }
  launch(arguments);
}

void StandinProcess::launch(const std::vector<std::string>& arguments) {
  std::vector<std::string> all = m_base;
  all.insert(all.end(), arguments.begin(), arguments.end());
  Pipe output;
  m_pid = start(all, output.ends[1], -1);
  close(output.ends[1]);
  char byte;
  bool isReady = read(output.ends[0], &byte, 1) == 1;
  close(output.ends[0]);
  if (!isReady) throw std::runtime_error("the stand-in does not start");
}

void StandinProcess::kill() {
  signal(SIGKILL);
  wait();
}

void StandinProcess::restart(const std::vector<std::string>& arguments) {
  if (m_pid >= 0) kill();
  launch(arguments);
}

StandinProcess::~StandinProcess() {
  if (m_pid < 0) return;
  signal(SIGTERM);
  EXPECT_EQ(wait(), 0);
}

void StandinProcess::signal(int number) const {
  ::kill(m_pid, number);
}

int StandinProcess::wait() {
  int status = waitFor(m_pid);
  m_pid = -1;
  return status;
}
