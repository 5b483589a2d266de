// Passes finished messages to the destination, directly or through the background queue.

#include "util/sink/log_queue.h"

#include <syslog.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
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
#include "util/sink/log_text.h"
#include "util/sink/syslog_line.h"
#include "util/text/made_once.h"
#include "util/thread/pause.h"

namespace vesk {
namespace {

constexpr int kDefaultQueueSize = 256;
constexpr unsigned int kDebugFactor = 4;

struct LogRoute {
  Mutex startStop;  // serializes startThread and stopThread; taken before all other locks of the logger
  std::unique_ptr<Thread> gLogThread FOKRAZO_GUARDED_BY(startStop);

  boost::shared_ptr<RunQueue> gLogQueue FOKRAZO_GUARDED_BY(gLogMessageProtect());  // null: no queue
  int holds FOKRAZO_GUARDED_BY(gLogMessageProtect()) = 0;        // above 0: messages go to `held`
  QueuedMessages held FOKRAZO_GUARDED_BY(gLogMessageProtect());  // in order
  std::atomic<int> posting{0};                                   // active posts; incremented under the lock
};

MadeOnce<LogRoute> gRoute;

LogRoute& route() {
  return gRoute.get();
}

// Ends a post that was counted in `posting` under gLogMessageProtect.
class Posting {
 public:
  Posting() = default;
  ~Posting() { --route().posting; }
  Posting(const Posting&) = delete;
  Posting& operator=(const Posting&) = delete;
};

thread_local bool gReportsDrop = false;

// Replaces the newest message of a full queue with a warning.
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
    // Cannot be reported anywhere.
  }
}

void reportUnexpected(const std::exception& error) {
  char text[512];
  snprintf(text, sizeof text, "Unexpected runqueue exception %s", error.what());
  escapeInPlace(text, strlen(text), sizeof text);
  writeSyslog(LOG_WARNING, text);
}

// Writes out the queue in the calling thread.
void drain(RunQueue& queue) {
  try {
    try {
      queue.runQueue(-1);
    } catch (const QueueInterrupted&) {
      queue.runQueue(-1);  // the runner left before it saw the interrupt
    }
  } catch (const std::exception& error) {
    reportUnexpected(error);
  }
}

void writeNow(const QueuedMessages& messages) {
  for (const boost::shared_ptr<QueuedMessage>& message : messages) try {
      message->run();
    } catch (const VESKException&) {
      // Cannot be reported anywhere.
    }
}

// The routine of the background thread.
void* logThread(void* queue) {
  try {
    static_cast<RunQueue*>(queue)->runQueue();
  } catch (const QueueInterrupted&) {
  } catch (const std::exception& error) {
    reportUnexpected(error);
  }
  return nullptr;
}

void joinQuietly(Thread& thread) {
  try {
    thread.join();
  } catch (const VESKException&) {
    // The throw was logged; the queue is still written out.
  }
}

unsigned int queueSize(int configured) {
  const auto size = static_cast<unsigned int>(configured);
  const boost::shared_ptr<Logger> logger = Logger::GetThreadPrivateLogger("log");
  return logger && logger->isEnabled(Logger::Debug) ? size * kDebugFactor : size;
}

// From now on new messages are held. Returns the queue, to which other threads may still be posting.
boost::shared_ptr<RunQueue> beginStop() {
  LogRoute& current = route();
  Lock lock(gLogMessageProtect());
  ++current.holds;
  return current.gLogQueue;
}

// Writes out all queued messages, and those being posted.
void drainToTheLast(RunQueue& queue) {
  for (drain(queue); route().posting > 0; drain(queue)) pause::forMilliseconds(1);
  drain(queue);
}

QueuedMessages takeHeld() {
  LogRoute& current = route();
  Lock lock(gLogMessageProtect());
  return std::exchange(current.held, {});
}

// Writes the held messages; later ones are then written directly. Most are written without the lock; those
// that arrive meanwhile are written under it, to keep the order.
void finishStop() {
  writeNow(takeHeld());
  LogRoute& current = route();
  Lock lock(gLogMessageProtect());
  writeNow(current.held);
  current.held.clear();
  current.gLogQueue.reset();
  --current.holds;
}

}  // namespace

void forgetQueueAfterFork() {
  gRoute.abandon();
}

HeldMessages::Scope::Scope(HeldMessages& held) : m_held(held) {
  ++route().holds;
}

HeldMessages::Scope::~Scope() {
  LogRoute& current = route();
  if (--current.holds > 0 || current.held.empty()) return;
  m_held.m_messages.swap(current.held);
  m_held.m_queue = current.gLogQueue;
  if (m_held.m_queue) ++current.posting;
}

HeldMessages::~HeldMessages() noexcept(false) {
  if (!m_queue) {
    writeNow(m_messages);
    return;
  }
  Posting counted;
  for (const boost::shared_ptr<QueuedMessage>& message : m_messages) post(*m_queue, message);
}

void WriteMessage(int facility, Logger::LogLevel level, CharAccumulator<512>& format, va_list args) {
  openLog(false);
  const int priority = facility | syslogPriority(level);
  LogRoute& current = route();
  Lock lock(gLogMessageProtect());
  const boost::shared_ptr<RunQueue> queue = current.gLogQueue;
  if (!queue && current.holds == 0) {
    lock.unLock();
    return FinalRendering(priority, format.terminate(), args);
  }
  auto message = boost::make_shared<QueuedMessage>(priority, format.terminate(), args);
  if (current.holds > 0) return current.held.push_back(std::move(message));
  ++current.posting;
  Posting counted;
  lock.unLock();
  post(*queue, std::move(message));
}

void Logger::startThread(boost::shared_ptr<Logger> logger) {
  openLog(false);
  LogRoute& current = route();
  Lock startStop(current.startStop);
  if (current.gLogThread) return;
  const int configured = Props(false, false)->getInt(PN::LOGGER_QUEUE_SIZE, kDefaultQueueSize);
  if (configured < 1) {
    VESK_LOG(logger, Warn, "LogQueue disabled.  Recommended for debugging only.");
    return;
  }
  VESK_LOG(logger, Debug, "starting background log thread");
  const auto queue = boost::make_shared<RunQueue>("Log", queueSize(configured), true);
  auto thread = std::make_unique<Thread>();
  thread->start(kLoggingLogger, logThread, queue.get(), 50);
  current.gLogThread = std::move(thread);
  Lock lock(gLogMessageProtect());
  current.gLogQueue = queue;
}

// Joins the thread without the logger's locks, which it may need to report a full queue.
void Logger::stopThread(boost::shared_ptr<Logger> logger) {
  LogRoute& current = route();
  Lock startStop(current.startStop);
  const std::unique_ptr<Thread> thread = std::move(current.gLogThread);
  if (!thread) return;
  const boost::shared_ptr<RunQueue> queue = beginStop();
  queue->interrupt();
  joinQuietly(*thread);
  drainToTheLast(*queue);
  finishStop();
  VESK_LOG(logger, Debug, "stopped background log thread");
}

}  // namespace vesk
