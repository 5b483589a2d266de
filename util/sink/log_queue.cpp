// The way of a message behind its making: straight to the destination, or through the background queue.

#include "util/sink/log_queue.h"

#include <syslog.h>

#include <atomic>
#include <cstdlib>
#include <exception>
#include <memory>
#include <new>
#include <stdexcept>
#include <utility>

#include <boost/make_shared.hpp>

#include <fokrazo/char_accumulator.h>
#include <fokrazo/error_util.h>
#include <fokrazo/log.h>
#include <fokrazo/log_destination.h>
#include <fokrazo/properties.h>
#include <fokrazo/propnames.h>
#include <fokrazo/queued_message.h>
#include <fokrazo/thread.h>
#include "util/log/log_internal.h"
#include "util/sink/sink_internal.h"
#include "util/thread/pause.h"

namespace vesk {
namespace {

constexpr int kDefaultQueueSize = 256;
constexpr unsigned int kDebugFactor = 4;

// The background queue, guarded by gLogMessageProtect where nothing else is said.
struct LogRoute {
  boost::shared_ptr<RunQueue> gLogQueue;  // null: messages go straight to the destination
  std::unique_ptr<Thread> gLogThread;     // guarded by startStopProtect
  int holds = 0;                          // above 0: messages for the queue go to `held`
  QueuedMessages held;                    // in order
  std::atomic<int> posting{0};            // posts under way; counted up under the lock
};

LogRoute& route() {
  static LogRoute& instance = *new LogRoute;
  return instance;
}

// Puts startThread and stopThread in one order; taken before every other lock of the logger.
Mutex& startStopProtect() {
  static Mutex& mutex = *new Mutex;
  return mutex;
}

// Ends, when it goes, a post that was counted in `posting` under gLogMessageProtect.
class Posting {
 public:
  Posting() = default;
  ~Posting() { --route().posting; }
  Posting(const Posting&) = delete;
  Posting& operator=(const Posting&) = delete;
};

thread_local bool gReportsDrop = false;

// The queue stayed full: its newest message makes room for a word about that.
void dropNewest(RunQueue& queue, const char* reason) {
  queue.pop_back();
  if (gReportsDrop) return;
  gReportsDrop = true;
  VESK_LOG_TO("log", Error,
              "Warning: Zantrel logger dropping messages:(%s) Please insure syslog is running correctly or "
              "increase the value of %s in velmora.conf.",
              reason, PN::LOGGER_QUEUE_SIZE.c_str());
  gReportsDrop = false;
}

void post(RunQueue& queue, boost::shared_ptr<QueuedMessage> message) {
  try {
    queue.post(std::move(message));
  } catch (const std::out_of_range& full) {
    dropNewest(queue, full.what());
  } catch (const VESKException&) {
    // Nobody could be told.
  }
}

// Writes out what is queued, in the calling thread.
void drain(RunQueue& queue) {
  try {
    try {
      queue.runQueue(-1);
    } catch (const QueueInterrupted&) {
      queue.runQueue(-1);  // the runner had left by itself before it saw the interrupt
    }
  } catch (const std::exception& error) {
    syslog(LOG_WARNING, "Unexpected runqueue exception %s", error.what());
  }
}

void writeNow(const QueuedMessages& messages) {
  for (const boost::shared_ptr<QueuedMessage>& message : messages) try {
      message->run();
    } catch (const VESKException&) {
      // Nobody could be told.
    }
}

// The routine of the background thread.
void* logThread(void* queue) {
  try {
    static_cast<RunQueue*>(queue)->runQueue();
  } catch (const QueueInterrupted&) {
  } catch (const std::exception& error) {
    syslog(LOG_WARNING, "Unexpected runqueue exception %s", error.what());
  }
  return nullptr;
}

void joinQuietly(Thread& thread) {
  try {
    thread.join();
  } catch (const VESKException&) {
    // It has left a log line; the queue is written out all the same.
  }
}

unsigned int queueSize(int configured) {
  const auto size = static_cast<unsigned int>(configured);
  const boost::shared_ptr<Logger> logger = Logger::GetThreadPrivateLogger("log");
  return logger && logger->isEnabled(Logger::Debug) ? size * kDebugFactor : size;
}

// From here on what is logged is held. Gives the queue, which posters may still be busy with.
boost::shared_ptr<RunQueue> beginStop() {
  Lock lock(gLogMessageProtect());
  ++route().holds;
  return route().gLogQueue;
}

// Writes out all that is in the queue or on its way into it.
void drainToTheLast(RunQueue& queue) {
  for (drain(queue); route().posting > 0; drain(queue)) pause::forMilliseconds(1);
  drain(queue);
}

// What was held follows, and the direct way is open.
void finishStop() {
  Lock lock(gLogMessageProtect());
  LogRoute& current = route();
  writeNow(current.held);
  current.held.clear();
  current.gLogQueue.reset();
  --current.holds;
}

}  // namespace

void forgetQueueAfterFork() {
  new (&startStopProtect()) Mutex;
  new (&route()) LogRoute;
}

HeldMessages::Scope::Scope(HeldMessages& held) : m_held(held) {
  ++route().holds;
}

HeldMessages::Scope::~Scope() {
  LogRoute& current = route();
  if (--current.holds > 0 || current.held.empty()) return;
  m_held.m_messages.swap(current.held);
  m_held.m_queue = current.gLogQueue;
  ++current.posting;
}

HeldMessages::~HeldMessages() noexcept(false) {
  if (!m_queue) return;
  Posting underWay;
  for (const boost::shared_ptr<QueuedMessage>& message : m_messages) post(*m_queue, message);
}

void WriteMessage(int facility, Logger::LogLevel level, CharAccumulator<512>& format, va_list args) {
  openLog(false);
  const int priority = facility | syslogPriority(level);
  Lock lock(gLogMessageProtect());
  LogRoute& current = route();
  const boost::shared_ptr<RunQueue> queue = current.gLogQueue;
  if (!queue) return FinalRendering(priority, format.terminate(), args);
  auto message = boost::make_shared<QueuedMessage>(priority, format.terminate(), args);
  if (current.holds > 0) return current.held.push_back(std::move(message));
  ++current.posting;
  Posting underWay;
  lock.unLock();
  post(*queue, std::move(message));
}

void Logger::startThread(boost::shared_ptr<Logger> logger) {
  openLog(false);
  Lock startStop(startStopProtect());
  if (route().gLogThread) return;
  const int configured = Props(false, false)->getInt(PN::LOGGER_QUEUE_SIZE, kDefaultQueueSize);
  if (configured < 1) {
    VESK_LOG(logger, Warn, "LogQueue disabled.  Recommended for debugging only.");
    return;
  }
  VESK_LOG(logger, Debug, "starting background log thread");
  const auto queue = boost::make_shared<RunQueue>("Log", queueSize(configured), true);
  auto thread = std::make_unique<Thread>();
  thread->start(kLoggingLogger, logThread, queue.get(), 50);
  route().gLogThread = std::move(thread);
  Lock lock(gLogMessageProtect());
  route().gLogQueue = queue;
}

// The logger's locks are free while the thread is waited for: it may need them to report a full queue.
void Logger::stopThread(boost::shared_ptr<Logger> logger) {
  Lock startStop(startStopProtect());
  const std::unique_ptr<Thread> thread = std::move(route().gLogThread);
  if (!thread) return;
  const boost::shared_ptr<RunQueue> queue = beginStop();
  queue->interrupt();
  joinQuietly(*thread);
  drainToTheLast(*queue);
  finishStop();
  VESK_LOG(logger, Debug, "stopped background log thread");
}

}  // namespace vesk
