#include "daemon/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

#include "daemon/descriptor.h"

namespace brondalt {

void openStandardStreams() {
  // Each call opens the lowest free descriptor, and so fills the next gap.
  for (;;) {
    const int fd = open("/dev/null", O_RDWR);
    if (fd < 0) throwSystemError("/dev/null");
    if (fd <= STDERR_FILENO) continue;
    close(fd);
    return;
  }
}

void discardStandardStreams() {
  const Descriptor null(open("/dev/null", O_RDWR | O_CLOEXEC), "/dev/null");
  for (int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    if (dup2(null.get(), fd) < 0) throwSystemError("/dev/null");
}

}  // namespace brondalt
