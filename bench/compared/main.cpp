// Prints measurements of the library, one per line: key, value and unit, separated by tabs. Uses only the
// public interface of the shared library. bench/README.md lists the keys.

#include <getopt.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

#include "bench/compared/parts.h"

namespace {

struct Part {
  const char* name;
  void (*measure)();
};

constexpr Part kParts[] = {
    {"exchanges", bench::measureExchanges}, {"curves", bench::measureCurves},
    {"messages", bench::measureMessages},   {"model", bench::measureModel},
    {"values", bench::measureValues},       {"config", bench::measureConfig},
    {"runtime", bench::measureRuntime},     {"logging", bench::measureLogging},
};

// In its own process, so that no part inherits memory, threads or configuration from another.
template <class Measure>
bool measureApart(Measure measure) {
  fflush(stdout);
  const pid_t child = fork();
  if (child != 0) {
    int status = -1;
    return child > 0 && waitpid(child, &status, 0) == child && status == 0;
  }
  try {
    measure();
    exit(0);
  } catch (const std::exception& error) {
    fprintf(stderr, "compared: %s\n", error.what());
    exit(1);
  }
}

int usage(FILE* out, int status) {
  fputs(
      "Usage: compared [--only PART] [--standin PROGRAM]\n\nPrints KEY, VALUE and UNIT of each "
      "figure.\nParts:",
      out);
  for (const Part& part : kParts) fprintf(out, " %s", part.name);
  fputs("\nwith --standin also measures against PROGRAM, the brondalt-standin\n", out);
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  constexpr option kOptions[] = {{"only", required_argument, nullptr, 'o'},
                                 {"standin", required_argument, nullptr, 's'},
                                 {"help", no_argument, nullptr, 'h'},
                                 {nullptr, 0, nullptr, 0}};
  std::string only;
  std::string standin;
  for (int code; (code = getopt_long(argc, argv, "", kOptions, nullptr)) != -1;) {
    if (code == 'h') return usage(stdout, 0);
    if (code == '?') return usage(stderr, 2);
    (code == 'o' ? only : standin) = optarg;
  }
  bool done = standin.empty() || measureApart([&] { bench::measureStandin(standin); });
  for (const Part& part : kParts)
    if (only.empty() || only == part.name) done = measureApart(part.measure) && done;
  return done ? 0 : 1;
}
