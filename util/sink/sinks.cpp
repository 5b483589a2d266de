#include "util/sink/sinks.h"

#include <boost/make_shared.hpp>

#include <fokrazo/mutex.h>
#include "util/log/log_internal.h"
#include "util/sink/circular_buffer_internal.h"
#include "util/sink/log_queue.h"
#include "util/sink/syslog_line.h"
#include "util/thread/fork_locks.h"

namespace vesk {

namespace {

void outputInChild(bool intact) {
  forgetQueueAfterFork();
  memoryLogInChild(intact);
}

}  // namespace

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
