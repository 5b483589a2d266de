/// Work that is due at a certain time of the day's clock. The resolution is one second.
#pragma once

#include <string>

#include <fokrazo/export.h>
#include <fokrazo/runqueue.h>

namespace vesk {

/// A function to be called after a delay, once or periodically.
class FOKRAZO_API TimedEvent : public QueueAble {
 public:
  /// Due `delay` seconds from now and, if `periodic`, again `delay` seconds after each run. With `dedup` it
  /// replaces a queued event of the same `id`. The caller owns `argument`.
  TimedEvent(const std::string& id, long delay, void (*function)(void*), void* argument, bool dedup,
             bool periodic);

  /// As QueueAble; run() calls the function.
  void run() override;
  bool dedupMe() override;
  const std::string& getID() const override;
  long getTimeout() override;
  bool periodic() override;
  void updateTimeout() override;

 private:
  std::string m_id;
  long m_delay;
  void (*m_function)(void*);
  void* m_argument;
  bool m_dedup;
  bool m_periodic;
  long m_timeout;
};

/// A queue in the order of its items' getTimeout(); items with equal times keep the order of posting. It has
/// no limit. Thread-safety: as RunQueue.
class FOKRAZO_API TimeQueue : public RunQueue {
 public:
  using RunQueue::RunQueue;

  /// Adds an item in its place, and wakes the runners if it is now the first one. Requires: not null.
  /// @throws EndOfFileException (-1) the queue is shutting down.
  void post(boost::shared_ptr<QueueAble> item) override;

  using RunQueue::runQueue;
  /// Runs what is due during that many seconds. When they are over it returns after the item that is running,
  /// so that 0 runs at most one due item. What an item throws is logged.
  /// @throws QueueInterrupted one call for each interrupt.
  void runQueue(int seconds) override;

  /// As getRunQueue, with the same registry, but a new queue is a TimeQueue.
  static RunQueue* getTimeQueue(const std::string& name, bool create, unsigned int maxSize);
  /// Posts a TimedEvent to the queue "daemon". False if the process has no such queue, or the queue refuses.
  /// A null `id` is the empty text.
  static bool postEvent(const char* id, long delay, void (&function)(void*), void* argument, bool dedup,
                        bool periodic);

 private:
  void runDue(Lock& lock, time_t deadline) FOKRAZO_REQUIRES(m_mutex);
  void runCaught(QueueAble& item);
};

}  // namespace vesk
