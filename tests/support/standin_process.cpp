#include "tests/support/standin_process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include <gtest/gtest.h>

namespace {

const std::string kSample = TEST_SOURCE_DIR "/standin/sample/";

}  // namespace

ScratchDirectory::ScratchDirectory() {
  char path[] = "/tmp/standin-XXXXXX";
  if (!mkdtemp(path)) throw std::runtime_error("mkdtemp");
  m_path = path;
}

ScratchDirectory::~ScratchDirectory() {
  std::filesystem::remove_all(m_path);
}

StandinProcess::StandinProcess(const std::vector<std::string>& arguments, const std::string& ldif)
    : m_socket(m_scratch.path("daemon")),
      m_base{TEST_BINARY_DIR "/bin/brondalt-standin", "--foreground", "--socket", m_socket, "--ldif"} {
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
  std::vector<char*> pointers;
  for (std::string& argument : all) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  int output[2];
  if (pipe2(output, O_CLOEXEC) != 0) throw std::runtime_error("pipe2");
  m_pid = fork();
  if (m_pid == 0) {
    dup2(output[1], STDOUT_FILENO);
    execv(pointers[0], pointers.data());
    _exit(127);
  }
  close(output[1]);
  char byte;
  const bool isReady = read(output[0], &byte, 1) == 1;
  close(output[0]);
  if (!isReady) throw std::runtime_error("the stand-in does not start");
}

void StandinProcess::kill() {
  ::kill(m_pid, SIGKILL);
  wait();
}

void StandinProcess::restart(const std::vector<std::string>& arguments) {
  if (m_pid >= 0) kill();
  launch(arguments);
}

StandinProcess::~StandinProcess() {
  if (m_pid < 0) return;
  ::kill(m_pid, SIGTERM);
  EXPECT_EQ(wait(), 0);
}

int StandinProcess::wait() {
  int status = 0;
  const bool ended = waitpid(m_pid, &status, 0) == m_pid && WIFEXITED(status);
  m_pid = -1;
  return ended ? WEXITSTATUS(status) : -1;
}
