/// Work that falls due at a time. The resolution is one second, by the day's clock.
#pragma once

#include <string>

#include <fokrazo/export.h>
#include <fokrazo/runqueue.h>

namespace vesk {

/// A function to be called once or again and again, after a delay.
class FOKRAZO_API TimedEvent : public QueueAble {
 public:
  /// Due `delay` seconds from now, and if `periodic` again `delay` seconds after each run. With `dedup` it
  /// replaces a queued event of the same `id`. `argument` stays the caller's.
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

/// A queue in the order of its items' getTimeout(), equal times in the order of posting. It has no limit.
/// Thread-safety: as RunQueue.
class FOKRAZO_API TimeQueue : public RunQueue {
 public:
  using RunQueue::RunQueue;

  /// Adds an item in its place; an earlier item than all others wakes the runners. Requires: not null.
  /// @throws EndOfFileException (-1) the queue is shutting down.
  void post(boost::shared_ptr<QueueAble> item) override;

  using RunQueue::runQueue;
  /// Runs what falls due for that many seconds. When they are over it returns after the item in hand, so that
  /// 0 runs one due item at most. What an item throws is logged.
  /// @throws QueueInterrupted one call for each interrupt.
  void runQueue(int seconds) override;

  /// As getRunQueue, in the same registry, but a new queue is a TimeQueue.
  static RunQueue* getTimeQueue(const std::string& name, bool create, unsigned int maxSize);
  /// Posts a TimedEvent to the queue "daemon". False if the process has none or it refuses. A null `id` is
  /// the empty text.
  static bool postEvent(const char* id, long delay, void (&function)(void*), void* argument, bool dedup,
                        bool periodic);

 private:
  void runDue(Lock& lock, time_t deadline);
  void runCaught(QueueAble& item);
};

}  // namespace vesk
