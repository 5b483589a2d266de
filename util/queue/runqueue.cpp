#include <fokrazo/runqueue.h>

#include <iterator>
#include <stdexcept>
#include <utility>

#include <fokrazo/error_util.h>
#include <fokrazo/log.h>
#include <fokrazo/propnames.h>
#include "util/error/throw.h"
#include "util/text/made_once.h"
#include "util/thread/clock.h"
#include "util/thread/fork_locks.h"
#include "util/thread/mutex_internal.h"
#include "util/thread/pause.h"
#include "util/thread/thread_internal.h"

namespace {

constexpr char kSource[] = "util/runqueue";
constexpr char kLogger[] = "util.runqueue";
constexpr int kLogRunnerPriority = 5;
// A poster at a full queue waits 0, 10, 20 … 990 ms: 49.5 seconds in all.
constexpr long kPauseStep = 10;
constexpr long kPauseEnd = 1000;

}  // namespace

const std::string MAIN_RUN_QUEUE = "daemon";

namespace vesk {

Runnable::~Runnable() = default;

bool QueueAble::dedupMe() {
  return false;
}
const std::string& QueueAble::getID() const {
  static MadeOnce<const std::string> none;
  return none.get();
}
long QueueAble::getTimeout() {
  return 0;
}
void QueueAble::setTimeout(long) {}
bool QueueAble::periodic() {
  return false;
}
void QueueAble::updateTimeout() {}
bool QueueAble::keepQueuedItem(long) {
  return false;
}

/// The role of first runner while a thread serves the queue. Cannot be cancelled, or the role would stay
/// taken.
class RunQueue::Seat {
 public:
  explicit Seat(RunQueue& queue) : m_queue(queue) {
    const BriefHold hold(m_queue.m_mutex);
    if (m_queue.m_runnerIsServing) return;
    m_queue.m_runner = threadNumber();
    m_queue.m_runnerIsServing = m_taken = true;
  }
  ~Seat() {
    if (!m_taken) return;
    const BriefHold hold(m_queue.m_mutex);
    m_queue.m_runnerIsServing = false;
  }
  bool taken() const { return m_taken; }
  Seat(const Seat&) = delete;
  Seat& operator=(const Seat&) = delete;

 private:
  RunQueue& m_queue;
  bool m_taken = false;
};

RunQueue::RunQueue(const std::string& name, unsigned int maxSize, bool isLogQueue)
    : m_name(name), m_maxSize(maxSize), m_isLogQueue(isLogQueue) {}

// The poster or runner that has woken the destroying thread may still hold the lock.
RunQueue::~RunQueue() {
  const BriefHold lastOneOut(m_mutex);
}

RunQueue::Registry& RunQueue::gQueues() {
  static MadeOnce<Registry> queues;
  inForkedChild(ForkOrder::WorkQueues, [](bool intact) {
    if (!intact) queues.abandon();
  });
  heldOverFork(ForkOrder::WorkQueues, queues.get().mutex());
  return queues.get();
}

RunQueue* RunQueue::find(const std::string& name, unsigned int maxSize,
                         RunQueue* (*make)(const std::string& name, unsigned int maxSize), const char* kind) {
  Registry& queues = gQueues();
  Lock lock(queues.mutex());
  const auto known = queues.find(name);
  if (known != queues.end()) return known->second;
  if (!make) return nullptr;
  RunQueue*& place = queues[name];
  place = make(name, maxSize);
  RunQueue* queue = place;
  lock.unLock();
  VESK_LOG_TO(kLogger, Debug, "Created new %s %s", kind, name.c_str());
  return queue;
}

RunQueue* RunQueue::getRunQueue(const std::string& name, bool create, unsigned int maxSize) {
  const auto make = [](const std::string& newName, unsigned int newSize) {
    return new RunQueue(newName, newSize, false);
  };
  return find(name, maxSize, create ? +make : nullptr, "RunQueue");
}

void RunQueue::post(boost::shared_ptr<QueueAble> item) {
  Lock lock(m_mutex);
  refuseIfShuttingDown(lock);
  const bool fromRunner = isRunner();
  if (!fromRunner) waitForRoom(lock);
  if (!doDeDup(item)) {
    insert(m_items.end(), std::move(item));
    wakeRunners();
  }
  if (m_maxSize == 0 || m_items.size() < m_maxSize / 2) return;
  m_congested = true;
  lock.unLock();
  if (!fromRunner) pause::forMilliseconds(kPauseStep);
}

// Releases the lock before the throw, because a throw may log. (The compiler cannot follow a lock that is
// passed in, here and below.)
void RunQueue::refuseIfShuttingDown(Lock& lock) FOKRAZO_NO_THREAD_SAFETY_ANALYSIS {
  if (!m_shuttingDown) return;
  lock.unLock();
  FOKRAZO_THROW(EndOfFileException, "EndOfFileException", -1, "Queue is shutting down");
}

bool RunQueue::isRunner() const {
  return m_runner == threadNumber();
}

void RunQueue::waitForRoom(Lock& lock) FOKRAZO_NO_THREAD_SAFETY_ANALYSIS {
  if (!isFull()) return;
  m_fullPending = true;
  for (long pauseTime = 0; m_congested && pauseTime < kPauseEnd; pauseTime += kPauseStep) {
    m_mutex.signalAll();
    lock.unLock();
    pause::forMilliseconds(pauseTime);
    lock.doLock();
    refuseIfShuttingDown(lock);
  }
  if (!isFull()) return;
  const MessageText text = MessageText::format("runqueue full %ld", static_cast<long>(m_items.size()));
  lock.unLock();
  if (m_isLogQueue) throw std::out_of_range(text.c_str());
  FOKRAZO_THROW(BufferFullException, "BufferFullException", -1, "%s", text.c_str());
}

bool RunQueue::doDeDup(boost::shared_ptr<QueueAble> item) {
  if (!item->dedupMe()) return false;
  for (auto queued = m_items.begin(); queued != m_items.end(); ++queued) {
    if ((*queued)->getID() != item->getID()) continue;
    if ((*queued)->keepQueuedItem(item->getTimeout())) return true;
    const Item dropped = take(queued);
    if (!m_isLogQueue) VESK_LOG_TO(kLogger, Debug, "removed duplicate request %s", item->getID().c_str());
    return false;
  }
  return false;
}

// One signal is enough until a runner has taken the lock. In a single-threaded process there are no waiters.
void RunQueue::wakeRunners() {
  if (!m_runnersWait || !Thread::locksCount()) return;
  m_runnersWait = false;
  m_mutex.signalAll();
}

void RunQueue::insert(Items::iterator before, Item item) {
  m_items.insert(before, std::move(item));
  m_empty.store(false, std::memory_order_release);
}

// The item outlives its queue entry, because its destructor may post to the queue.
RunQueue::Item RunQueue::take(Items::iterator place) {
  Item item;
  item.swap(*place);
  m_items.erase(place);
  m_empty.store(m_items.empty(), std::memory_order_release);
  return item;
}

void RunQueue::runQueue() {
  runQueue(0);
}

void RunQueue::runQueue(int seconds) {
  const time_t deadline = dayclock::now() + seconds;
  const Seat seat(*this);
  Thread* const self = Thread::getSelf();
  if (m_isLogQueue && seat.taken() && self) self->changePriority(kLogRunnerPriority);
  while (const Item item = next(seconds, deadline)) runItem(*item);
}

// The next item; empty when the runner should leave. (The compiler cannot follow a lock that may hold
// nothing.)
RunQueue::Item RunQueue::next(int seconds, time_t deadline) FOKRAZO_NO_THREAD_SAFETY_ANALYSIS {
  Lock lock(m_mutex);
  if (m_fullPending) reportFull(lock);
  if (m_maxSize != 0 && m_items.size() <= m_maxSize / 3) m_congested = false;
  const timespec end{deadline, 0};
  for (;;) {
    leaveIfInterrupted();
    if (!m_items.empty()) return take(m_items.begin());
    m_runnersWait = true;
    m_mutex.wait(seconds == 0 ? nullptr : &end);
    if (seconds != 0 && dayclock::now() >= deadline) return {};
    // In a single-threaded process the lock holds nothing; a second thread may have started meanwhile.
    lock.doLock();
  }
}

// Without the lock: a log sink may wait for a lock that a poster holds.
void RunQueue::reportFull(Lock& lock) FOKRAZO_NO_THREAD_SAFETY_ANALYSIS {
  m_fullPending = false;
  lock.unLock();
  VESK_LOG_TO(kLogger, Warn, "%s queue is full.  You may need to increase the value of %s in velmora.conf.",
              m_name.c_str(), PN::LOGGER_QUEUE_SIZE.c_str());
  lock.doLock();
}

void RunQueue::leaveIfInterrupted() {
  if (!m_interrupted) return;
  m_interrupted = false;
  throw QueueInterrupted();
}

void RunQueue::runItem(QueueAble& item) {
  try {
    item.run();
  } catch (const VESKException& e) {
    if (!m_isLogQueue) VESK_LOG_TO(kLogger, Debug, "unhandled exception %s", e.what());
  }
}

void RunQueue::interrupt() {
  Lock lock(m_mutex);
  m_interrupted = true;
  m_mutex.signalAll();
}

void RunQueue::pop_back() {
  Lock lock(m_mutex);
  if (!m_items.empty()) take(std::prev(m_items.end()));
}

bool RunQueue::isEmpty() {
  return m_empty;
}

void RunQueue::shutdown(Thread& thread) {
  {
    Lock lock(m_mutex);
    m_shuttingDown = true;
  }
  interrupt();
  thread.join();
  {
    Lock lock(m_mutex);
    m_interrupted = false;
  }
  runQueue(-1);
}

}  // namespace vesk
