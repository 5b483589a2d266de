/// Runs the fokrazo tool as a person does: by a shell's command line.
#pragma once

#include <sys/wait.h>

#include <cstdio>
#include <string>

struct Ran {
  int status;
  std::string out;  // what it printed on both streams
};

/// A shell's command line behind the tool's name, with `input` (escapes as of printf) on its standard input.
inline Ran run(const std::string& words, const std::string& input = "") {
  const std::string tool = TEST_BINARY_DIR "/bin/fokrazo ";
  FILE* pipe = popen(("printf '" + input + "' | " + tool + words + " 2>&1").c_str(), "r");
  Ran ran{-1, ""};
  if (!pipe) return ran;
  char buffer[4096];
  while (size_t count = fread(buffer, 1, sizeof buffer, pipe)) ran.out.append(buffer, count);
  const int status = pclose(pipe);
  ran.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return ran;
}
