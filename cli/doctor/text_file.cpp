#include "cli/doctor/text_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <sstream>

namespace cli {

namespace {

constexpr size_t kLargest = 1 << 20;

std::string contentOf(int fd) {
  std::string content;
  char buffer[4096];
  ssize_t count;
  while (content.size() < kLargest && (count = read(fd, buffer, sizeof buffer)) > 0)
    content.append(buffer, static_cast<size_t>(count));
  return content;
}

}  // namespace

std::vector<std::string> linesOf(const std::string& path) {
  std::vector<std::string> lines;
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);  // it may be a FIFO
  if (fd < 0) return lines;
  struct stat info;
  std::istringstream content(fstat(fd, &info) == 0 && S_ISREG(info.st_mode) ? contentOf(fd) : "");
  close(fd);
  for (std::string line; std::getline(content, line);) lines.push_back(line);
  return lines;
}

}  // namespace cli
