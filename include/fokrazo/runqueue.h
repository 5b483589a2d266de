/// Work queues: small objects with a `run`, served in order by whichever threads call runQueue.
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

/// Something that can be run, once or many times.
class FOKRAZO_API Runnable {
 public:
  /// Does it. What it throws is its caller's to handle.
  virtual void run() = 0;
  virtual ~Runnable();
};

/// What a queue takes, with what the queue asks of it. A queue asks under its lock, and is not to be used by
/// the answer; it runs an item without.
class FOKRAZO_API QueueAble : public Runnable {
 public:
  /// Whether the queue looks for duplicates of this item.
  virtual bool dedupMe();
  /// Items with the same text are duplicates; owned by the item.
  virtual const std::string& getID() const;
  /// When the item falls due, in seconds since the epoch.
  virtual long getTimeout();
  /// Sets it.
  virtual void setTimeout(long timeout);
  /// Whether a TimeQueue posts the item again after it has run.
  virtual bool periodic();
  /// Sets the next time the item falls due.
  virtual void updateTimeout();
  /// Asked of a queued item when a duplicate with that timeout arrives: true keeps this one and drops the
  /// new.
  virtual bool keepQueuedItem(long timeout);
};

/// A named first-in, first-out queue of work. A queue that is half full slows its posters down, and a full
/// one makes them wait a bounded time. Thread-safety: any number of posters and runners. Items run with no
/// lock held. Several queues may be locked by one thread; the registry's lock is held with none of them.
class FOKRAZO_API RunQueue {
 public:
  /// Queues by name, behind one lock.
  using Registry = Wrapper::Check<Wrapper::Locked, Map<std::string, RunQueue*>>;

  /// A queue outside the registry. `maxSize` 0 means no limit. `isLogQueue` marks the queue of the background
  /// log, which must not log what happens to it.
  RunQueue(const std::string& name, unsigned int maxSize, bool isLogQueue);
  /// Requires: no poster and no runner is left.
  virtual ~RunQueue();

  /// Adds an item at the back and wakes the runners. Requires: not null.
  /// Blocks for 10 ms on a queue that is half full, and for at most 49.5 seconds on a full one; never in the
  /// queue's first runner, which is never refused either.
  /// @throws EndOfFileException (-1) the queue is shutting down.
  /// @throws BufferFullException (-1) the queue stayed full; std::out_of_range if it is the log's.
  virtual void post(boost::shared_ptr<QueueAble> item);
  /// Looks for a queued duplicate of `item`, and drops it unless it wants to stay. True: `item` is not to be
  /// queued. Requires: the queue's lock is held.
  virtual bool doDeDup(boost::shared_ptr<QueueAble> item);
  /// Serves the queue in the calling thread: without end if `seconds` is 0, otherwise until the queue is
  /// empty when that time is over; -1 drains it. A VESKException out of an item is logged; any other passes
  /// through.
  /// @throws QueueInterrupted one call for each interrupt.
  virtual void runQueue(int seconds);
  /// runQueue(0).
  virtual void runQueue();
  /// Makes one runner leave with QueueInterrupted, the next that looks.
  virtual void interrupt();
  /// Removes the newest item.
  virtual void pop_back();
  /// Takes no lock.
  virtual bool isEmpty();
  /// Closes the queue for good, interrupts and joins its one runner, and runs what is left.
  /// Requires: `thread` leaves its routine on QueueInterrupted.
  virtual void shutdown(Thread& thread);

  /// Finds the queue of that name, of any kind; `maxSize` counts for a new one alone. Null if there is none
  /// and `create` is false. The queue lives to the end of the process.
  static RunQueue* getRunQueue(const std::string& name, bool create, unsigned int maxSize);

  RunQueue(const RunQueue&) = delete;
  RunQueue& operator=(const RunQueue&) = delete;

 protected:
  /// What is queued.
  using Item = boost::shared_ptr<QueueAble>;
  using Items = std::deque<Item>;

  /// The registry's queue of that name; `make` makes it if it is missing and `make` is not null.
  static RunQueue* find(const std::string& name, unsigned int maxSize,
                        RunQueue* (*make)(const std::string& name, unsigned int maxSize), const char* kind);

  // What follows requires m_mutex to be held.

  /// Throws, with `lock` released, if the queue is shutting down.
  void refuseIfShuttingDown(Lock& lock);
  /// Put an item into the queue, and take one out.
  void insert(Items::iterator before, Item item);
  Item take(Items::iterator place);
  /// Throws QueueInterrupted, for this runner alone.
  void leaveIfInterrupted();

  const std::string m_name;
  const unsigned int m_maxSize;  // 0 means no limit
  const bool m_isLogQueue;

  Mutex m_mutex;  // guards what follows; recursive, because items are destroyed under it. Its condition wakes
                  // runners.
  Items m_items;  // in the order in which they are run
  bool m_interrupted = false;   // the runners are to leave
  bool m_shuttingDown = false;  // and nothing is taken any more

 private:
  class Seat;

  static Registry& gQueues();

  bool isFull() const { return m_maxSize != 0 && m_items.size() >= m_maxSize; }
  bool isRunner() const;
  void wakeRunners();
  void waitForRoom(Lock& lock);
  void reportFull(Lock& lock);
  Item next(int seconds, time_t deadline);
  void runItem(QueueAble& item);

  bool m_congested = false;    // from half full until drained to a third
  bool m_runnersWait = false;  // since the last time that they were woken
  bool m_fullPending = false;  // a poster found the queue full; the next runner reports it
  Thread* m_runner = nullptr;  // the first runner, while it serves the queue; not owned
  std::atomic<bool> m_empty{true};
};

}  // namespace vesk
