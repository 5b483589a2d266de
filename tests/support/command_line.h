/// Runs a program of this project from a shell's command line.
#pragma once

namespace testsupport {

struct Ran {
  int status;
  std::string out;  // its output, of both streams
};

/// Runs `line`, a program's name and its arguments, with `input` (printf escapes allowed) as standard input.
inline Ran run(const std::string& line, const std::string& input = "") {
  FILE* pipe = popen(("printf '" + input + "' | '" TEST_BINARY_DIR "'/bin/" + line + " 2>&1").c_str(), "r");
  Ran ran{-1, ""};
  if (!pipe) return ran;
  char buffer[4096];
  while (size_t count = fread(buffer, 1, sizeof buffer, pipe)) ran.out.append(buffer, count);
  const int status = pclose(pipe);
  ran.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return ran;
}

}  // namespace testsupport
