// A fork while other threads log leaves the child with locks that nobody gives back, with a queue that nobody
// serves, and with lines that the parent writes too. So a fork waits until no line is half done; the child
// gets fresh locks and goes on without queue, straight to the destination. It may start a thread of its own.

#include <pthread.h>

#include <new>

#include "util/include/thread.h"
#include "util/log_internal.h"

namespace vesk {
namespace {

thread_local bool gHeldOverFork = false;

void beforeFork() {
  gHeldOverFork = Thread::m_threadsActive > 0;
  if (!gHeldOverFork) return;
  gNamedLoggersProtect().lock();
  gLogMessageProtect().lock();
  gFileLogging().mutex.lock();
}

void inParent() {
  if (!gHeldOverFork) return;
  gFileLogging().mutex.unLock();
  gLogMessageProtect().unLock();
  gNamedLoggersProtect().unLock();
}

// The system ties a recursive mutex to a thread's number, and the child's only thread has a new one: the
// mutexes cannot be given back there, they are made anew.
void inChild() {
  if (gHeldOverFork)
    for (Mutex* mutex : {&gNamedLoggersProtect(), &gLogMessageProtect(), &gFileLogging().mutex})
      new (mutex) Mutex;
  gFileLogging().forgetAfterFork();
  forgetQueueAfterFork();
}

}  // namespace

void keepLoggingOverFork() {
  pthread_atfork(beforeFork, inParent, inChild);
}

}  // namespace vesk
