/// Work queues: objects with a `run`, served in order by the threads that call runQueue.
#pragma once

#include <atomic>
#include <ctime>
#include <deque>
#include <string>

#include <boost/shared_ptr.hpp>

#include <fokrazo/export.h>
#include <fokrazo/mutex.h>
#include <fokrazo/wrapper.h>

/// "daemon", the queue of TimeQueue::postEvent.
FOKRAZO_API extern const std::string MAIN_RUN_QUEUE;

namespace vesk {

using ::MAIN_RUN_QUEUE;

class Thread;

/// An action that can be run once or repeatedly.
class FOKRAZO_API Runnable {
 public:
  /// Runs the action. The caller handles what it throws.
  virtual void run() = 0;
  virtual ~Runnable();
};

/// An item of a queue. The queue calls run() without its lock and all other functions with its lock held;
/// they must not use the queue.
class FOKRAZO_API QueueAble : public Runnable {
 public:
  /// Whether the queue looks for duplicates of this item.
  virtual bool dedupMe();
  /// Items with the same ID are duplicates. Owned by the item.
  virtual const std::string& getID() const;
  /// The due time, in seconds since the epoch.
  virtual long getTimeout();
  /// Sets the due time.
  virtual void setTimeout(long timeout);
  /// Whether a TimeQueue posts the item again after it has run.
  virtual bool periodic();
  /// Moves the due time to the next period.
  virtual void updateTimeout();
  /// Called on a queued item when a duplicate with that due time arrives: true keeps the queued item and
  /// drops the new one.
  virtual bool keepQueuedItem(long timeout);
};

/// A named first-in, first-out queue of work. Posting slows down when the queue is half full, and waits for a
/// bounded time when it is full. Items run with no lock held.
/// Thread-safety: any number of posters and runners. One thread may hold the locks of several queues, but not
/// together with the registry's lock.
/// Fork: if another thread was using a queue during the fork, the child must not use it.
class FOKRAZO_API RunQueue {
 public:
  /// Queues by name, under one lock.
  using Registry = Wrapper::Check<Wrapper::Locked, Map<std::string, RunQueue*>>;

  /// A queue outside the registry. `maxSize` 0 means no limit. `isLogQueue` marks the background log's queue,
  /// which must not log its own events.
  RunQueue(const std::string& name, unsigned int maxSize, bool isLogQueue);
  /// Requires: no poster and no runner is left.
  virtual ~RunQueue();

  /// Adds an item at the back and wakes the runners. Requires: not null.
  /// Blocks for 10 ms on a queue that is half full, and for at most 49.5 seconds on a full one. Never blocks
  /// or refuses the queue's first runner, even after its runQueue has returned: no other thread would make
  /// room. Another thread becomes the first runner when it serves the queue while the first one does not.
  /// @throws EndOfFileException (-1) the queue is shutting down
  /// @throws BufferFullException (-1) the queue stayed full; std::out_of_range if it is the log's.
  virtual void post(boost::shared_ptr<QueueAble> item);
  /// Looks for a queued duplicate of `item` and drops it, unless its keepQueuedItem returns true. Returns
  /// true if `item` is not to be queued. Requires: the queue's lock is held.
  virtual bool doDeDup(boost::shared_ptr<QueueAble> item) FOKRAZO_REQUIRES(m_mutex);
  /// Serves the queue in the calling thread: forever if `seconds` is 0, otherwise until that time is over and
  /// the queue is empty; -1 drains the queue. A VESKException from an item is logged; other exceptions
  /// propagate.
  /// @throws QueueInterrupted in one runner for each interrupt
  virtual void runQueue(int seconds);
  /// runQueue(0).
  virtual void runQueue();
  /// Makes one runner, the next one to look for an item, leave with QueueInterrupted.
  virtual void interrupt();
  /// Removes the newest item.
  virtual void pop_back();
  /// Whether nothing is queued. Takes no lock.
  virtual bool isEmpty();
  /// Closes the queue for good, interrupts and joins its only runner, and runs the remaining items. Requires:
  /// `thread` leaves its routine on QueueInterrupted.
  virtual void shutdown(Thread& thread);

  /// Returns the queue of that name, of either class. If there is none, creates it with `maxSize`, or returns
  /// null if `create` is false. The queue lives until the process ends.
  static RunQueue* getRunQueue(const std::string& name, bool create, unsigned int maxSize);

  RunQueue(const RunQueue&) = delete;
  RunQueue& operator=(const RunQueue&) = delete;

 protected:
  /// The queued items.
  using Item = boost::shared_ptr<QueueAble>;
  using Items = std::deque<Item>;

  /// The registry's queue of that name. If missing, it is created with `make`, unless that is null.
  static RunQueue* find(const std::string& name, unsigned int maxSize,
                        RunQueue* (*make)(const std::string& name, unsigned int maxSize), const char* kind);

  /// Throws, with `lock` released, if the queue is shutting down.
  void refuseIfShuttingDown(Lock& lock) FOKRAZO_REQUIRES(m_mutex);
  /// Insert an item, and remove one.
  void insert(Items::iterator before, Item item) FOKRAZO_REQUIRES(m_mutex);
  Item take(Items::iterator place) FOKRAZO_REQUIRES(m_mutex);
  /// Throws QueueInterrupted if a runner is to leave.
  void leaveIfInterrupted() FOKRAZO_REQUIRES(m_mutex);

  const std::string m_name;      // as logged
  const unsigned int m_maxSize;  // 0 means no limit
  const bool m_isLogQueue;       // does not log its own events

  Mutex m_mutex;  // recursive, because items are destroyed under it; its condition wakes runners
  Items m_items FOKRAZO_GUARDED_BY(m_mutex);                // in running order
  bool m_interrupted FOKRAZO_GUARDED_BY(m_mutex) = false;   // a runner is to leave
  bool m_shuttingDown FOKRAZO_GUARDED_BY(m_mutex) = false;  // nothing is accepted any more

 private:
  class Seat;

  static Registry& gQueues();

  bool isFull() const FOKRAZO_REQUIRES(m_mutex) { return m_maxSize != 0 && m_items.size() >= m_maxSize; }
  bool isRunner() const FOKRAZO_REQUIRES(m_mutex);
  void wakeRunners() FOKRAZO_REQUIRES(m_mutex);
  void waitForRoom(Lock& lock) FOKRAZO_REQUIRES(m_mutex);
  void reportFull(Lock& lock) FOKRAZO_REQUIRES(m_mutex);
  Item next(int seconds, time_t deadline);
  void runItem(QueueAble& item);

  bool m_congested FOKRAZO_GUARDED_BY(m_mutex) = false;    // from half full until drained to a third
  bool m_runnersWait FOKRAZO_GUARDED_BY(m_mutex) = false;  // since they were last woken
  bool m_fullPending FOKRAZO_GUARDED_BY(m_mutex) =
      false;  // a poster found the queue full; the next runner reports it
  unsigned long m_runner FOKRAZO_GUARDED_BY(m_mutex) =
      0;  // number of the thread that is the first runner; 0: none yet
  bool m_runnerIsServing FOKRAZO_GUARDED_BY(m_mutex) = false;  // whether it is in runQueue now
  std::atomic<bool> m_empty{true};
};

}  // namespace vesk
