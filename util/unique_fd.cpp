#include "util/include/unique_fd.h"

#include <unistd.h>

#include "util/include/threads_api.h"

namespace vesk {

int UniqueFd::close() {
  if (m_fd < 0) return 0;
  int state = PTHREAD_CANCEL_ENABLE;
  const bool threads = threadsSupported();
  if (threads) pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &state);
  const int rc = ::close(release());
  if (threads) pthread_setcancelstate(state, nullptr);
  return rc;
}

}  // namespace vesk
