#include "lrpc/wire/call_progress.h"

#include <iterator>

namespace vesk {

namespace {

// Row i belongs to step i.
constexpr const char* kSteps[] = {
    "nothing, as the daemon failed a moment ago",
    "waiting for a session",
    "connecting",
    "having this process checked",
    "sending the request",
    "waiting for the reply",
    "reading the reply",
};

// How long a call may take to notice its cancellation.
constexpr std::chrono::milliseconds kCancellationInterval(20);

}  // namespace

const char* textOf(CallStep step) noexcept {
  const auto index = static_cast<size_t>(step);
  return index < std::size(kSteps) ? kSteps[index] : "";
}

bool CallProgress::mustStop() {
  if (cancellation && cancellation->isCancelled())
    stop = Stop::Cancelled;
  else if (deadline.hasPassed())
    stop = Stop::DeadlinePassed;
  return stop != Stop::None;
}

Deadline CallProgress::nextLook() const {
  return cancellation ? deadline.orEarlier(Deadline::in(kCancellationInterval)) : deadline;
}

}  // namespace vesk
