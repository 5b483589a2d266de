// batch: runs the commands of standard input, for programs that ask a lot.

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <memory>

#include "cli/command.h"
#include "cli/global_options.h"
#include "cli/run.h"
#include "cli/words.h"

namespace cli {

namespace {

// These print something other than records, or never end.
constexpr const char* kExcluded[] = {"batch", "help", "watch"};

constexpr size_t kLongestLine = 1 << 20;

// The lines of what was standard input. Commands find an empty one instead.
class Lines {
 public:
  Lines() : m_stream(nullptr, fclose) {
    const int copy = fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    m_stream.reset(copy < 0 ? nullptr : fdopen(copy, "r"));
    const int empty = open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (!m_stream || empty < 0 || dup2(empty, STDIN_FILENO) < 0) throw UnreadableError(kName);
    if (empty != STDIN_FILENO) close(empty);
  }

  bool next(std::string& line) {
    line.clear();
    int c;
    while ((c = getc_unlocked(m_stream.get())) != EOF && c != '\n') {
      if (line.size() == kLongestLine) throw Failure(kFailed, "a line has more than a million bytes");
      line += static_cast<char>(c);
    }
    if (ferror(m_stream.get())) throw UnreadableError(kName);
    return c != EOF || !line.empty();
  }

 private:
  static constexpr char kName[] = "standard input";

  std::unique_ptr<FILE, int (*)(FILE*)> m_stream;
};

void refuseExcluded(const std::string& name) {
  for (const char* excluded : kExcluded)
    if (name == excluded) throw UsageError("batch does not run " + name);
}

// Runs one line, and prints what it printed, or why it failed, as one JSON line.
ExitStatus runLine(const std::string& line, Daemon& daemon) {
  std::list<std::string> answers;
  Output collector(true, false);
  collector.collectInto(&answers);
  const ExitStatus status = guarded(collector, [&] {
    const std::vector<std::string> words = splitWords(line);
    if (words.empty()) return kFound;
    Arguments arguments(words, requireOption);
    const std::string name = arguments.operand("a command");
    refuseExcluded(name);
    return runCommand(name, arguments, collector, daemon);
  });
  Record record;
  record.text("command", line).number("status", status).list("answers", answers);
  printf("%s\n", record.json().c_str());
  fflush(stdout);
  return status;
}

bool isComment(const std::string& line) {
  const size_t first = line.find_first_not_of(" \t\r");
  return first == std::string::npos || line[first] == '#';
}

ExitStatus batch(Invocation& invocation) {
  invocation.arguments.done();
  ExitStatus status = kFound;
  Lines lines;
  for (std::string line; !ferror(stdout) && lines.next(line);)
    if (!isComment(line)) status = worse(status, runLine(line, invocation.daemon));
  return status;
}

constexpr char kNotes[] =
    "Reads one command per line of at most 1 MiB, with words quoted as in a shell; empty lines\n"
    "and lines that begin with # are skipped. Prints one JSON line for each command at once:\n"
    "\"command\", its exit \"status\", and \"answers\", the records that it would print with --json.\n"
    "All commands share the connections. The exit status is that of the worst command.\n";

const Command kCommands[] = {
    {"batch", "", "run the commands of standard input", batch, {}, kNotes},
};

}  // namespace

Family scriptCommands() {
  return {"Scripts", kCommands, std::size(kCommands)};
}

}  // namespace cli
