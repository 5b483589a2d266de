#include "cli/host_account.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <vector>

#include <fokrazo/osport.h>
#include <fokrazo/strutil.h>
#include "cli/child_pipe.h"

namespace cli {

namespace {

constexpr char kProgram[] = "/usr/bin/getent";
constexpr int kNoSuchKey = 2;  // its exit status, getent(1)
constexpr std::chrono::seconds kLongest(10);
constexpr size_t kLongestLine = 64 * 1024;
constexpr size_t kFields = 7;  // passwd(5)

// Starts the program with its output in `out`. Returns its process id, or -1.
pid_t start(const std::string& name, int out) {
  const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
  if (null < 0) return -1;
  std::string words[] = {"getent", "--", "passwd", name};
  char* arguments[] = {&words[0][0], &words[1][0], &words[2][0], &words[3][0], nullptr};
  int descriptors[] = {null, out, null};
  const pid_t child = spawnfv_time(1, 3, descriptors, kProgram, arguments, -1, false, true);
  close(null);
  return child;
}

HostAccount accountIn(const std::string& output) {
  HostAccount account;
  std::vector<std::string> fields;
  vesk::StringSplit(':', output.substr(0, output.find('\n')), fields);
  if (fields.size() != kFields) return account;
  account.outcome = HostAccount::Found;
  account.uid = fields[2];
  account.gid = fields[3];
  account.home = fields[5];
  account.shell = fields[6];
  return account;
}

}  // namespace

HostAccount hostAccountOf(const std::string& name) {
  HostAccount account;
  int ends[2];
  if (!openPipe(ends)) return account;
  const auto end = std::chrono::steady_clock::now() + kLongest;
  const pid_t child = start(name, ends[1]);
  close(ends[1]);
  std::string output;
  if (child > 0) readWithin(ends[0], end, output, kLongestLine);
  close(ends[0]);
  if (child < 0) return account;
  const std::optional<int> status = reap(child, end);
  if (!status) account.outcome = HostAccount::TooSlow;
  if (!status || !WIFEXITED(*status)) return account;
  if (WEXITSTATUS(*status) == 0) return accountIn(output);
  if (WEXITSTATUS(*status) == kNoSuchKey) account.outcome = HostAccount::NotFound;
  return account;
}

}  // namespace cli
