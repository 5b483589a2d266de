#include "util/file/unique_fd.h"

#include <unistd.h>

#include "util/thread/thread_internal.h"

namespace vesk {

int UniqueFd::close() {
  if (m_fd < 0) return 0;
  const CancelKeptOff cancelKeptOff;
  return ::close(release());
}

}  // namespace vesk
