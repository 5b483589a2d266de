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

/// A POSIX thread. Locks count from the moment the object exists, before the thread is started.
/// Every failing call throws SystemException "OS call failed: …" unless said otherwise.
class FOKRAZO_API Thread {
 public:
  Thread();
  /// Neither joins nor cancels. Requires: the thread has ended or was never started.
  virtual ~Thread();

  /// Starts the thread, which calls `routine(argument)`. The caller owns `argument`. A null `name` keeps the
  /// earlier one. `priority` has no effect.
  void start(const char* name, void* (*routine)(void*), void* argument, int priority);
  /// Waits for the thread's end. Does nothing on a second call or after detach.
  void join();
  /// Lets the thread end by itself; it cannot be joined any more.
  void detach();
  /// Asks a running thread to end at its next cancellation point. Does nothing if it has ended.
  void cancel();
  /// cancel, then join.
  void kill();
  /// Changes the scheduling priority by `delta`, if `brondalt.clients.threads.priority` allows it. Failures
  /// only go to the log.
  void changePriority(int delta);
  /// Called in the thread when it ends by cancellation or by pthread_exit.
  virtual void unexpectedTermination();

  /// The name given to start; empty before.
  const std::string& name() const { return m_name; }
  /// Whether the thread has been started and its routine has not ended; whether cancel was called; the
  /// system's id of the thread, 0 before start.
  bool isRunning() const { return m_running; }
  bool isCancelled() const { return m_cancelled; }
  pthread_t id() const { return m_id; }

  /// The calling thread's object; null in a thread that this class did not start.
  static Thread* getSelf();
  /// Sleep; a cancellation point at the beginning and at the end. True if all of the time passed, false if a
  /// signal cut it short. The second form adds up its parts, which must stay below one second together.
  static bool sleep(long seconds, long nanoseconds);
  static bool sleep(long seconds, int milliseconds, int microseconds, int nanoseconds);
  /// Lets other threads run.
  static void yield();
  /// Allow and forbid the calling thread's cancellation.
  static void enableKill();
  static void disableKill();
  /// Whether locks are taken: the process has, or once had, a second thread, or a Thread object exists, or
  /// SetThreadsActive(true) was called. Costs two loads. Where the C library cannot tell, the answer is true.
  static bool locksCount() {
#if __has_include(<sys/single_threaded.h>)
    return __libc_single_threaded == 0 || m_threadsActive.load(std::memory_order_relaxed) > 0;
#else
    return true;
#endif
  }
  /// Nothing needs this call: locks count as soon as the process has a second thread, started by any code.
  /// True makes them count already before that, for a program that starts its first thread while it holds a
  /// Lock; each call adds one to m_threadsActive. False sets m_threadsActive to 0.
  static void SetThreadsActive(bool active);
  /// Finds out whether the process has a threads library; called by the first Mutex.
  static void DetermineThreadSupport();
  /// No effect on this platform.
  static void SetMonoProcessor(bool mono);

  /// Whether DetermineThreadSupport was called, and what it found.
  static std::atomic<bool> m_threadSupportKnown;
  static std::atomic<bool> m_threadsSupported;
  /// Number of Thread objects, and of calls of SetThreadsActive(true).
  static std::atomic<int> m_threadsActive;

  Thread(const Thread&) = delete;
  Thread& operator=(const Thread&) = delete;

 private:
  static void* ThreadStart(void* thread);
  static void ThreadCancelCleanup(void* thread);
  static void TSDKeyAlloc();
  /// @throws SystemException (ESRCH) never started.
  pthread_t startedId() const;
  void ended();
  /// Calls `call` with the thread's id while it is certain to be running. Returns the call's error, or ESRCH
  /// if the thread has ended.
  template <class Call>
  int whileRunning(Call call);

  std::string m_name;
  std::atomic<bool> m_running{false};  // from start to the routine's end
  bool m_joined = false;               // joined or detached
  std::atomic<pthread_t> m_id{};
  void* (*m_routine)(void*) = nullptr;
  std::atomic<bool> m_cancelled{false};
  void* m_argument = nullptr;
};

}  // namespace vesk
