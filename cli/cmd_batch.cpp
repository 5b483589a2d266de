// batch: runs the commands of standard input, for programs that ask a lot.

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

#include "cli/command.h"
#include "cli/global_options.h"
#include "cli/run.h"
#include "cli/words.h"

namespace cli {

namespace {

// These print something other than records, or never end.
constexpr const char* kExcluded[] = {"batch", "help", "watch"};

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
  ~Lines() { free(m_buffer); }
  Lines(const Lines&) = delete;
  Lines& operator=(const Lines&) = delete;

  bool next(std::string& line) {
    const ssize_t length = getline(&m_buffer, &m_capacity, m_stream.get());
    if (length < 0 && ferror(m_stream.get())) throw UnreadableError(kName);
    if (length < 0) return false;
    line.assign(m_buffer, static_cast<size_t>(length));
    if (line.back() == '\n') line.pop_back();
    return true;
  }

 private:
  static constexpr char kName[] = "standard input";

  std::unique_ptr<FILE, int (*)(FILE*)> m_stream;
  char* m_buffer = nullptr;
  size_t m_capacity = 0;
};

void refuseExcluded(const std::vector<std::string>& words) {
  for (const char* name : kExcluded)
    if (words.front() == name) throw UsageError("batch does not run " + words.front());
}

// Runs one line, and prints what it printed, or why it failed, as one JSON line.
ExitStatus runLine(const std::string& line, Daemon& daemon) {
  std::list<std::string> answers;
  Output collector(true, false);
  collector.collectInto(&answers);
  const ExitStatus status = guarded(collector, [&] {
    const std::vector<std::string> words = splitWords(line);
    if (words.empty()) return kFound;
    refuseExcluded(words);
    Arguments arguments(words, requireOption);
    return runCommand(arguments, collector, daemon);
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
  for (std::string line; lines.next(line);)
    if (!isComment(line)) status = worse(status, runLine(line, invocation.daemon));
  return status;
}

constexpr char kNotes[] =
    "Reads one command per line, with words quoted as in a shell; empty lines and lines that\n"
    "begin with # are skipped. Prints one JSON line for each command at once: \"command\", its\n"
    "exit \"status\", and \"answers\", the records that it would print with --json. All commands\n"
    "share the connections. The exit status is that of the worst command.\n";

const Command kCommands[] = {
    {"batch", "", "run the commands of standard input", batch, {}, kNotes},
};

}  // namespace

Family scriptCommands() {
  return {"Scripts", kCommands, std::size(kCommands)};
}

}  // namespace cli
