#include "tests/support/standin_process.h"

#include <sys/prctl.h>
#include <sys/syscall.h>

#include <iostream>

namespace {

const std::string kSample = TEST_SOURCE_DIR "/standin/sample/";
// Bounds a hang. No test depends on how long anything takes.
constexpr int kPatienceMs = 120 * 1000;

bool awaitEvents(int fd, short events) {
  pollfd polled = {fd, events, 0};
  int ready;
  do ready = poll(&polled, 1, kPatienceMs);
  while (ready < 0 && errno == EINTR);
  return ready > 0;
}

// In the child, between fork and exec: async-signal-safe calls alone.
[[noreturn]] void becomeStandin(pid_t parent, char** arguments, int output, const char* errorPath) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) _exit(127);  // the parent ended before the line above
  const int null = open("/dev/null", O_RDONLY | O_CLOEXEC);
  const int errors = open(errorPath, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  dup2(null, STDIN_FILENO);
  dup2(output, STDOUT_FILENO);
  dup2(errors, STDERR_FILENO);
  execv(arguments[0], arguments);
  _exit(127);
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
  const std::string errorPath = m_scratch.path("stderr");
  int output[2];
  if (pipe2(output, O_CLOEXEC) != 0) throw std::runtime_error("pipe2");
  const pid_t parent = getpid();
  m_pid = fork();
  if (m_pid == 0) becomeStandin(parent, pointers.data(), output[1], errorPath.c_str());
  close(output[1]);
  char byte;
  const bool isReady = awaitEvents(output[0], POLLIN) && read(output[0], &byte, 1) == 1;
  close(output[0]);
  if (isReady) return;
  kill();
  throw std::runtime_error("the stand-in does not start");
}

std::string StandinProcess::errors() const {
  std::ostringstream text;
  text << std::ifstream(m_scratch.path("stderr")).rdbuf();
  return text.str();
}

void StandinProcess::signal(int number) const {
  ::kill(m_pid, number);
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

int StandinProcess::wait() {
  const int end = static_cast<int>(syscall(SYS_pidfd_open, m_pid, 0));
  if (end >= 0 && !awaitEvents(end, POLLIN)) signal(SIGKILL);
  close(end);
  int status = 0;
  const bool ended = waitpid(m_pid, &status, 0) == m_pid;
  m_pid = -1;
  const bool killed = ended && WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
  if (!killed && status != 0) std::cerr << errors();
  return ended && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
