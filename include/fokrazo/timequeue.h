/// Work that is due at a certain time of CLOCK_REALTIME, with a resolution of one second.
#pragma once

#include <string>

#include <fokrazo/export.h>
#include <fokrazo/runqueue.h>

namespace vesk {

/// A function called after a delay, once or periodically.
class FOKRAZO_API TimedEvent : public QueueAble {
 public:
  /// Due `delay` seconds from now and, if `periodic`, again `delay` seconds after each run. With `dedup` it
  /// replaces a queued event with the same `id`. The caller owns `argument`.
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

/// An unlimited queue, sorted by its items' getTimeout(); items due at the same time keep the order of
/// posting. Thread-safety: as RunQueue.
class FOKRAZO_API TimeQueue : public RunQueue {
 public:
  using RunQueue::RunQueue;

  /// Inserts an item by due time, and wakes the runners if it is now the first one. Requires: not null.
  /// @throws EndOfFileException (-1) the queue is shutting down
  void post(boost::shared_ptr<QueueAble> item) override;

  using RunQueue::runQueue;
  /// Runs due items for that many seconds, and returns after the item that is then running; 0 runs at most
  /// one due item. Exceptions from items are logged.
  /// @throws QueueInterrupted in one runner for each interrupt
  void runQueue(int seconds) override;

  /// As getRunQueue and with the same registry, but creates a TimeQueue.
  static RunQueue* getTimeQueue(const std::string& name, bool create, unsigned int maxSize);
  /// Posts a TimedEvent to the queue "daemon". Returns false if there is no such queue or it refuses the
  /// item. A null `id` is the empty string.
  static bool postEvent(const char* id, long delay, void (&function)(void*), void* argument, bool dedup,
                        bool periodic);

 private:
  void runDue(Lock& lock, time_t deadline) FOKRAZO_REQUIRES(m_mutex);
  void runCaught(QueueAble& item);
};

}  // namespace vesk
