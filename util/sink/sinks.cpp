// The sinks as the tree of loggers sees them.

#include <syslog.h>

#include <boost/make_shared.hpp>

#include <fokrazo/circular_buffer.h>
#include <fokrazo/mutex.h>
#include "util/log/log_internal.h"
#include "util/sink/sink_internal.h"

namespace vesk {

boost::shared_ptr<CircularBuffer>& gCircularBuffer() {
  static auto& buffer = *new boost::shared_ptr<CircularBuffer>;
  return buffer;
}

void openSinks() {
  static const bool overFork = (keepLoggingOverFork(), true);
  (void)overFork;
  Lock lock(gLogMessageProtect());
  gCircularBuffer() = boost::make_shared<CircularBuffer>();
}

void closeSinks() {
  Lock output(gLogMessageProtect());
  gCircularBuffer().reset();
  Lock destination(gFileLogging().mutex);
  closelog();
}

void writeToMemory(const char* format, va_list args) {
  va_list copy;
  va_copy(copy, args);
  Lock lock(gLogMessageProtect());
  if (gCircularBuffer()) gCircularBuffer()->log(format, copy);
  va_end(copy);
}

}  // namespace vesk
