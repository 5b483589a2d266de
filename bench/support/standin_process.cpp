#include "bench/support/standin_process.h"

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>

#include "bench/support/plain_socket.h"

namespace bench {
namespace {

[[noreturn]] void become(std::vector<std::string> words, int output) {
  std::vector<char*> pointers;
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  dup2(output, STDOUT_FILENO);
  execv(pointers[0], pointers.data());
  die(pointers[0]);
  abort();
}

}  // namespace

StandinProcess::StandinProcess(const std::string& program, const std::string& ldif,
                               const std::vector<std::string>& arguments)
    : m_folder(std::filesystem::temp_directory_path() / "bench-XXXXXX") {
  if (!mkdtemp(m_folder.data())) die("mkdtemp");
  std::vector<std::string> words = {program, "--foreground", "--socket", socket(), "--ldif", ldif};
  words.insert(words.end(), arguments.begin(), arguments.end());
  int ready[2];
  if (pipe(ready) != 0) die("pipe");
  m_pid = fork();
  if (m_pid == 0) become(std::move(words), ready[1]);
  close(ready[1]);
  char byte;
  if (read(ready[0], &byte, 1) != 1) die("the stand-in did not start");
  close(ready[0]);
}

StandinProcess::~StandinProcess() {
  kill(m_pid, SIGTERM);
  waitpid(m_pid, nullptr, 0);
  std::error_code ignored;
  std::filesystem::remove_all(m_folder, ignored);
}

}  // namespace bench
