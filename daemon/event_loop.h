/// The event loop of a daemon.
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

/// Calls handlers when descriptors are ready, after delays, and on request. Every ready descriptor is served
/// once per round, so none can starve the others. Thread-safety: one thread, the one that runs it; any thread
/// may post().
class EventLoop {
 public:
  using Clock = std::chrono::steady_clock;
  using Task = std::function<void()>;
  /// Called with the events that occurred.
  using Handler = std::function<void(unsigned events)>;

  /// Event bits. kClosed is always reported: the peer has closed both directions, or the descriptor has
  /// failed.
  static constexpr unsigned kReadable = 1, kWritable = 2, kClosed = 4;

  /// @throws Error
  EventLoop();
  ~EventLoop();
  EventLoop(const EventLoop&) = delete;
  EventLoop& operator=(const EventLoop&) = delete;

  /// Begins to watch a descriptor, which the caller owns and must forget() before it is closed.
  /// @throws Error
  void watch(int fd, unsigned events, Handler handler);
  /// Changes the events to wait for; may be 0. @throws Error
  void change(int fd, unsigned events);
  /// The handler of a forgotten descriptor is no longer called, not even later in the same round. A handler
  /// may forget its own descriptor.
  void forget(int fd);

  /// Calls `task` once after `delay`.
  void after(Clock::duration delay, Task task);
  /// Calls `task` in the next round. May be called from any thread, also while the loop waits.
  void post(Task task);

  /// Runs until a handler calls stop(). @throws Error waiting fails; also what a handler throws
  void run();
  void stop() { m_isStopped = true; }

 private:
  struct Watch {
    uint64_t id;
    unsigned events;
    std::shared_ptr<Handler> handler;
  };

  int pollTimeout() const;
  void dispatch(uint64_t id, unsigned events);
  void runTimers();
  void runPosted();
  bool takePosted(std::vector<Task>& tasks);

  Descriptor m_poll;
  Descriptor m_wake;  // readable when a task is posted
  bool m_isStopped = false;
  uint64_t m_lastId = 0;
  std::unordered_map<int, Watch> m_watches;  // by descriptor
  std::unordered_map<uint64_t, int> m_fds;   // by id, which is never reused
  std::multimap<Clock::time_point, Task> m_timers;
  vesk::Mutex m_mutex;
  std::vector<Task> m_posted FOKRAZO_GUARDED_BY(m_mutex);
};

}  // namespace brondalt
