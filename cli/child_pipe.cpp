#include "cli/child_pipe.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace cli {

namespace {

constexpr int kLookInterval = 5;  // milliseconds

}  // namespace

bool readWithin(int fd, std::chrono::steady_clock::time_point end, std::string& text, size_t size) {
  for (;;) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    if (left.count() <= 0) return false;
    pollfd entry = {fd, POLLIN, 0};
    if (poll(&entry, 1, static_cast<int>(left.count())) <= 0) continue;
    char buffer[512];
    const ssize_t count = read(fd, buffer, sizeof buffer);
    if (count <= 0) return true;
    text.append(buffer, std::min(static_cast<size_t>(count), size - text.size()));
  }
}

bool openPipe(int ends[2]) {
  if (pipe2(ends, O_CLOEXEC) != 0) return false;
  for (int* end = ends; end < ends + 2; ++end) {
    if (*end > STDERR_FILENO) continue;
    const int low = *end;
    *end = fcntl(low, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    close(low);
  }
  return ends[0] >= 0 && ends[1] >= 0;
}

std::optional<int> reap(pid_t child, std::chrono::steady_clock::time_point end) {
  int status = 0;
  while (waitpid(child, &status, WNOHANG) == 0) {
    if (std::chrono::steady_clock::now() >= end) {
      kill(child, SIGKILL);
      while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
      }
      return std::nullopt;
    }
    poll(nullptr, 0, kLookInterval);
  }
  return status;
}

}  // namespace cli
