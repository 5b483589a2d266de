/// The loop that all of a daemon runs in.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

#include <fokrazo/mutex.h>
#include <fokrazo/thread_annotations.h>
#include "daemon/descriptor.h"

namespace brondalt {

/// Calls handlers when descriptors are ready, when time has passed, and on request. Every ready descriptor
/// has its turn in each round, so none can starve the others. Thread-safety: one thread, the one that runs
/// it; any thread may post().
class EventLoop {
 public:
  using Clock = std::chrono::steady_clock;
  using Task = std::function<void()>;
  /// Is called with the events that have come.
  using Handler = std::function<void(unsigned events)>;

  /// Bits of events. kClosed comes whether it is asked for or not: the peer has closed both directions, or
  /// the descriptor has failed.
  static constexpr unsigned kReadable = 1, kWritable = 2, kClosed = 4;

  /// @throws Error
  EventLoop();
  ~EventLoop();
  EventLoop(const EventLoop&) = delete;
  EventLoop& operator=(const EventLoop&) = delete;

  /// Begins to watch a descriptor, which stays the caller's and must be forgotten before it is closed.
  /// @throws Error
  void watch(int fd, unsigned events, Handler handler);
  /// Changes the events that are waited for; none is allowed. @throws Error
  void change(int fd, unsigned events);
  /// Handlers of a forgotten descriptor are not called any more, not even later in the same round. A handler
  /// may forget its own descriptor.
  void forget(int fd);

  /// Calls `task` once, when `delay` has passed.
  void after(std::chrono::milliseconds delay, Task task);
  /// Calls `task` in the next round. From any thread, also while the loop waits.
  void post(Task task);

  /// Runs until a handler calls stop(). @throws Error the system cannot wait, and what a handler throws
  void run();
  void stop() { m_isStopped = true; }

 private:
  struct Watch {
    uint64_t id;
    unsigned events;
    std::shared_ptr<Handler> handler;
  };

  int timeToWait() const;
  void dispatch(uint64_t id, unsigned events);
  void runTimers();
  void runPosted();
  bool takePosted(std::vector<Task>& tasks);

  Descriptor m_poll;
  Descriptor m_wake;  // readable when a task is posted
  bool m_isStopped = false;
  uint64_t m_lastId = 0;
  std::unordered_map<int, Watch> m_watches;  // by descriptor
  std::unordered_map<uint64_t, int> m_fds;   // by id, which is never used twice
  std::multimap<Clock::time_point, Task> m_timers;
  vesk::Mutex m_mutex;
  std::vector<Task> m_posted FOKRAZO_GUARDED_BY(m_mutex);
};

}  // namespace brondalt
