#include "util/file/unique_fd.h"

#include <fcntl.h>
#include <unistd.h>

#include "util/thread/thread_internal.h"

namespace vesk {

int UniqueFd::close() {
  if (m_fd < 0) return 0;
  const CancelKeptOff cancelKeptOff;
  return ::close(release());
}

UniqueFd aboveStandardStreams(UniqueFd fd) {
  if (!fd || fd.get() > STDERR_FILENO) return fd;
  return UniqueFd(::fcntl(fd.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

}  // namespace vesk
