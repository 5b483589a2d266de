// A fork while other threads log leaves the child with a queue that nobody serves, and with lines that the
// parent writes too. The child goes on without queue, straight to the destination; it may start a thread of
// its own. Its locks are fresh by then (util/thread/fork_locks.h), and no line is half done.

#include <pthread.h>

#include "util/sink/sink_internal.h"

namespace vesk {
namespace {

void inChild() {
  gFileLogging().forgetAfterFork();
  forgetQueueAfterFork();
}

}  // namespace

void keepLoggingOverFork() {
  // Makes what a child has to forget: there is no taking of memory there.
  gFileLogging();
  forgetQueueAfterFork();
  pthread_atfork(nullptr, nullptr, inChild);
}

}  // namespace vesk
