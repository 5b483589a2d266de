#include <fokrazo/timequeue.h>

#include <cxxabi.h>

#include <algorithm>
#include <exception>

#include <boost/make_shared.hpp>

#include <fokrazo/log.h>
#include "util/thread/clock.h"

namespace {

constexpr char kLogger[] = "util.runqueue";

}  // namespace

namespace vesk {

TimedEvent::TimedEvent(const std::string& id, long delay, void (*function)(void*), void* argument, bool dedup,
                       bool periodic)
    : m_id(id),
      m_delay(delay),
      m_function(function),
      m_argument(argument),
      m_dedup(dedup),
      m_periodic(periodic),
      m_timeout(dayclock::in(delay)) {}

void TimedEvent::run() {
  m_function(m_argument);
}
bool TimedEvent::dedupMe() {
  return m_dedup;
}
const std::string& TimedEvent::getID() const {
  return m_id;
}
long TimedEvent::getTimeout() {
  return m_timeout;
}
bool TimedEvent::periodic() {
  return m_periodic;
}
void TimedEvent::updateTimeout() {
  m_timeout = dayclock::in(m_delay);
}

RunQueue* TimeQueue::getTimeQueue(const std::string& name, bool create, unsigned int maxSize) {
  const auto make = [](const std::string& newName, unsigned int newSize) -> RunQueue* {
    return new TimeQueue(newName, newSize, false);
  };
  return find(name, maxSize, create ? +make : nullptr, "TimeQueue");
}

void TimeQueue::post(boost::shared_ptr<QueueAble> item) {
  Lock lock(m_mutex);
  refuseIfShuttingDown(lock);
  if (doDeDup(item)) return;
  const long timeout = item->getTimeout();
  const auto later = std::find_if(m_items.begin(), m_items.end(),
                                  [&](const Item& queued) { return queued->getTimeout() > timeout; });
  const bool wake = later == m_items.begin() || later == m_items.end();
  insert(later, std::move(item));
  if (wake) m_mutex.signalAll();
}

void TimeQueue::runQueue(int seconds) {
  const time_t deadline = dayclock::now() + seconds;
  Lock lock(m_mutex);
  for (;;) {
    runDue(lock, deadline);
    leaveIfInterrupted();
    if (dayclock::now() >= deadline) return;
    const long wakeUp = m_items.empty() ? deadline : std::min<long>(deadline, m_items.front()->getTimeout());
    const timespec end{wakeUp, 0};
    m_mutex.wait(&end);
    lock.unLock();
    lock.doLock();
  }
}

// Runs due items until the deadline or an interrupt. Releases `lock` while an item runs, which the compiler
// cannot follow.
void TimeQueue::runDue(Lock& lock, time_t deadline) FOKRAZO_NO_THREAD_SAFETY_ANALYSIS {
  while (!m_items.empty() && !m_interrupted && m_items.front()->getTimeout() <= dayclock::now()) {
    const Item item = take(m_items.begin());
    lock.unLock();
    runCaught(*item);
    lock.doLock();
    if (!m_shuttingDown && item->periodic()) {
      item->updateTimeout();
      post(item);
    }
    if (dayclock::now() >= deadline) return;
  }
}

void TimeQueue::runCaught(QueueAble& item) {
  try {
    item.run();
  } catch (const std::exception& e) {
    if (!m_isLogQueue) VESK_LOG_TO(kLogger, Debug, "unhandled exception %s", e.what());
  } catch (const abi::__forced_unwind&) {
    throw;  // the thread is being cancelled
  } catch (...) {
    VESK_LOG_TO(kLogger, Debug, "Timequeue::runQueue: got unknown exception");
  }
}

bool TimeQueue::postEvent(const char* id, long delay, void (&function)(void*), void* argument, bool dedup,
                          bool periodic) {
  RunQueue* queue = getTimeQueue(MAIN_RUN_QUEUE, false, 0);
  if (!queue) return false;
  try {
    queue->post(boost::make_shared<TimedEvent>(id ? id : "", delay, function, argument, dedup, periodic));
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace vesk
