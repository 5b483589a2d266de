/// Threads, and whether the process has more than one.
#pragma once

#include <pthread.h>
#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#endif

#include <atomic>
#include <string>

#include <fokrazo/export.h>

namespace vesk {

/// A POSIX thread. Locks count as soon as the object exists, before the thread starts. Every failing call
/// throws SystemException "OS call failed: …" unless a comment says otherwise.
class FOKRAZO_API Thread {
 public:
  Thread();
  /// Neither joins nor cancels. Requires: the thread has ended or was never started.
  virtual ~Thread();

  /// Starts the thread, which calls `routine(argument)`. The caller owns `argument`. A null `name` keeps the
  /// previous one. `priority` has no effect.
  void start(const char* name, void* (*routine)(void*), void* argument, int priority);
  /// Waits for the thread to end. Does nothing on a second call or after detach.
  void join();
  /// Detaches the thread; it can no longer be joined.
  void detach();
  /// Asks a running thread to end at its next cancellation point. Does nothing if it has ended.
  void cancel();
  /// cancel, then join.
  void kill();
  /// Changes the scheduling priority by `delta`, if `brondalt.clients.threads.priority` allows it. Failures
  /// are only logged.
  void changePriority(int delta);
  /// Called in the thread when it ends by cancellation or pthread_exit.
  virtual void unexpectedTermination();

  /// The name passed to start; empty before.
  const std::string& name() const { return m_name; }
  /// Whether the routine is running; whether cancel was called; the thread's id, 0 before start.
  bool isRunning() const { return m_running; }
  bool isCancelled() const { return m_cancelled; }
  pthread_t id() const { return m_id; }

  /// The calling thread's object; null in a thread that this class did not start.
  static Thread* getSelf();
  /// Sleep; cancellation points are at the beginning and at the end. Return true after the full time, false
  /// if a signal interrupted it. In the second form the parts of a second must add up to less than one.
  static bool sleep(long seconds, long nanoseconds);
  static bool sleep(long seconds, int milliseconds, int microseconds, int nanoseconds);
  /// Yields the processor.
  static void yield();
  /// Enable and disable the calling thread's cancellation.
  static void enableKill();
  static void disableKill();
  /// Whether locks are taken: the process has or had a second thread, or a Thread object exists, or
  /// SetThreadsActive(true) was called. Costs two loads. Always true if the C library cannot tell.
  static bool locksCount() {
#if __has_include(<sys/single_threaded.h>)
    return __libc_single_threaded == 0 || m_threadsActive.load(std::memory_order_relaxed) > 0;
#else
    return true;
#endif
  }
  /// Normally not needed: locks count as soon as any code starts a second thread. True makes them count
  /// earlier, for a program that starts its first thread while it holds a Lock; each call increments
  /// m_threadsActive. False sets m_threadsActive to 0.
  static void SetThreadsActive(bool active);
  /// Detects whether the process has a threads library. Called by the first Mutex.
  static void DetermineThreadSupport();
  /// No effect on this platform.
  static void SetMonoProcessor(bool mono);

  /// Whether DetermineThreadSupport was called, and what it found.
  static std::atomic<bool> m_threadSupportKnown;
  static std::atomic<bool> m_threadsSupported;
  /// The number of Thread objects plus calls of SetThreadsActive(true).
  static std::atomic<int> m_threadsActive;

  Thread(const Thread&) = delete;
  Thread& operator=(const Thread&) = delete;

 private:
  static void* ThreadStart(void* thread);
  static void ThreadCancelCleanup(void* thread);
  static void TSDKeyAlloc();
  /// @throws SystemException (ESRCH) never started
  pthread_t startedId() const;
  void ended();
  /// Calls `call` with the thread's id, while the thread cannot end. Returns its error, or ESRCH if the
  /// thread has ended.
  template <class Call>
  int whileRunning(Call call);

  std::string m_name;
  std::atomic<bool> m_running{false};  // from start until the routine ends
  bool m_joined = false;               // joined or detached
  std::atomic<pthread_t> m_id{};
  void* (*m_routine)(void*) = nullptr;
  std::atomic<bool> m_cancelled{false};
  void* m_argument = nullptr;
};

}  // namespace vesk
