/// What the library asks of threads beside the class Thread. Internal.
#pragma once

#include <fokrazo/thread.h>
#include "util/thread/threads_api.h"

namespace vesk {

/// Whether the process has the threads interface.
inline bool threadsSupported() {
  if (!Thread::m_threadSupportKnown) Thread::DetermineThreadSupport();
  return Thread::m_threadsSupported;
}

/// The calling thread's number, from 1; never reused in the process.
unsigned long threadNumber();

/// For the child of a fork, which has no other thread: whatever another thread of the parent was doing to a
/// Thread object, the child can use these objects.
void threadsInChild();

/// Disables cancellation until the end of the scope. Needed because close is a cancellation point, and
/// destructors close files.
class CancelKeptOff {
 public:
  CancelKeptOff() {
    if (threadsSupported()) pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_oldState);
  }
  ~CancelKeptOff() {
    if (threadsSupported()) pthread_setcancelstate(m_oldState, nullptr);
  }
  CancelKeptOff(const CancelKeptOff&) = delete;
  CancelKeptOff& operator=(const CancelKeptOff&) = delete;

 private:
  int m_oldState = PTHREAD_CANCEL_ENABLE;
};

}  // namespace vesk
