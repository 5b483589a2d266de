// The hooks that the tree of loggers calls.

#include <boost/make_shared.hpp>

#include <fokrazo/circular_buffer.h>
#include <fokrazo/mutex.h>
#include "util/log/log_internal.h"
#include "util/sink/sink_internal.h"
#include "util/sink/syslog_line.h"
#include "util/text/made_once.h"
#include "util/thread/fork_locks.h"

namespace vesk {

namespace {

MadeOnce<boost::shared_ptr<CircularBuffer>> gBuffer;

// The queue stays with the parent: the child writes directly to the destination, and may start its own
// thread. If another thread was writing to the memory log, the entry is incomplete, so the ring is emptied.
void outputInChild(bool intact) {
  forgetQueueAfterFork();
  const boost::shared_ptr<CircularBuffer>* const buffer = gBuffer.ifMade();
  if (!intact && buffer != nullptr && *buffer) (*buffer)->restart();
}

}  // namespace

boost::shared_ptr<CircularBuffer>& gCircularBuffer() {
  return gBuffer.get();
}

void openSinks() {
  inForkedChild(ForkOrder::LogMessages, outputInChild);
  Lock lock(gLogMessageProtect());
  gCircularBuffer() = boost::make_shared<CircularBuffer>();
}

void closeSinks() {
  {
    Lock output(gLogMessageProtect());
    gCircularBuffer().reset();
  }
  closeSyslog();
}

void writeToMemory(const char* format, va_list args) {
  va_list copy;
  va_copy(copy, args);
  Lock lock(gLogMessageProtect());
  if (gCircularBuffer()) gCircularBuffer()->log(format, copy);
  va_end(copy);
}

}  // namespace vesk
