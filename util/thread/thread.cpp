#include <fokrazo/thread.h>

#include <sched.h>

#include <cerrno>
#include <ctime>

#include "util/error/throw.h"
#include "util/hook/hooks.h"
#include "util/thread/thread_internal.h"

namespace {

constexpr char kSource[] = "util/thread";
constexpr char kLogger[] = "util.thread";

// Held while a thread ends, and while another acts on it, so that its id stays valid. Not a Mutex: that asks
// Thread whether locks count. Each hold is a few instructions long, with no call that could throw.
pthread_mutex_t gRunning = PTHREAD_MUTEX_INITIALIZER;

class RunningHold {
 public:
  RunningHold() { pthread_mutex_lock(&gRunning); }
  ~RunningHold() { pthread_mutex_unlock(&gRunning); }
  RunningHold(const RunningHold&) = delete;
  RunningHold& operator=(const RunningHold&) = delete;
};

// The calling thread's Thread object. The first thread to run creates the key.
pthread_key_t gTSDKey;
pthread_once_t gTSDKeyOnce = PTHREAD_ONCE_INIT;
std::atomic<bool> gTSDKeyMade{false};

// The configured attributes of a new thread.
class Attributes {
 public:
  Attributes() { FOKRAZO_CHECK_CALL(pthread_attr_init(&m_attributes)); }
  ~Attributes() { pthread_attr_destroy(&m_attributes); }

  void configure() {
    const vesk::ThreadPolicy policy = vesk::kHooks.threadPolicy();
    if (policy.stackSize > 0) setStackSize(policy.stackSize);
    if (policy.usesPriorities) FOKRAZO_CHECK_CALL(pthread_attr_setschedpolicy(&m_attributes, SCHED_FIFO));
  }
  const pthread_attr_t* get() const { return &m_attributes; }

  Attributes(const Attributes&) = delete;
  Attributes& operator=(const Attributes&) = delete;

 private:
  void setStackSize(int size) {
    if (pthread_attr_setstacksize(&m_attributes, size) == 0)
      FOKRAZO_HOOK_DEBUG(kLogger, "Set the pthread stack size to %d", size);
    else
      FOKRAZO_HOOK_DEBUG(kLogger, "Failed to set the thread stack size, using system default");
  }

  pthread_attr_t m_attributes;
};

std::atomic<unsigned long> gLastNumber{0};
thread_local unsigned long gNumber = 0;

void testCancel() {
  if (vesk::threadsSupported()) pthread_testcancel();
}

}  // namespace

namespace vesk {

unsigned long threadNumber() {
  if (gNumber == 0) gNumber = ++gLastNumber;
  return gNumber;
}

void threadsInChild() {
  gRunning = PTHREAD_MUTEX_INITIALIZER;
}

std::atomic<bool> Thread::m_threadSupportKnown{false};
std::atomic<bool> Thread::m_threadsSupported{false};
std::atomic<int> Thread::m_threadsActive{0};

Thread::Thread() {
  SetThreadsActive(true);
}

Thread::~Thread() {
  --m_threadsActive;
}

void Thread::SetThreadsActive(bool active) {
  if (active)
    ++m_threadsActive;
  else
    m_threadsActive = 0;
}

void Thread::DetermineThreadSupport() {
  m_threadsSupported = pthread_mutexattr_init != nullptr;
  m_threadSupportKnown = true;
}

void Thread::SetMonoProcessor(bool) {}

void Thread::start(const char* name, void* (*routine)(void*), void* argument, int) {
  m_routine = routine;
  m_argument = argument;
  if (name) m_name = name;
  Attributes attributes;
  attributes.configure();

  m_id = pthread_t{};
  m_joined = false;
  m_cancelled = false;
  // Set now, so that a cancel right after start is not lost.
  m_running = true;
  pthread_t id;
  const int error = pthread_create(&id, attributes.get(), ThreadStart, this);
  if (error != 0) m_running = false;
  FOKRAZO_CHECK_CALL(error);
  m_id = id;
}

void* Thread::ThreadStart(void* argument) {
  auto* thread = static_cast<Thread*>(argument);
  while (thread->m_id == pthread_t{}) sched_yield();
  pthread_once(&gTSDKeyOnce, TSDKeyAlloc);
  if (gTSDKeyMade) pthread_setspecific(gTSDKey, thread);
  void* result = thread->m_routine(thread->m_argument);
  if (gTSDKeyMade) pthread_setspecific(gTSDKey, nullptr);
  thread->ended();
  return result;
}

void Thread::TSDKeyAlloc() {
  gTSDKeyMade = pthread_key_create(&gTSDKey, ThreadCancelCleanup) == 0;
}

// The key still has a value: the routine was left by cancellation or pthread_exit.
void Thread::ThreadCancelCleanup(void* argument) {
  auto* thread = static_cast<Thread*>(argument);
  thread->unexpectedTermination();
  thread->ended();
}

void Thread::ended() {
  const RunningHold hold;
  m_running = false;
}

void Thread::unexpectedTermination() {}

Thread* Thread::getSelf() {
  return gTSDKeyMade ? static_cast<Thread*>(pthread_getspecific(gTSDKey)) : nullptr;
}

pthread_t Thread::startedId() const {
  if (m_id == pthread_t{}) FOKRAZO_CHECK_CALL(ESRCH);
  return m_id;
}

void Thread::join() {
  if (m_joined) return;
  FOKRAZO_CHECK_CALL(pthread_join(startedId(), nullptr));
  m_joined = true;
}

void Thread::detach() {
  if (m_joined) return;
  FOKRAZO_CHECK_CALL(pthread_detach(startedId()));
  m_joined = true;
}

template <class Call>
int Thread::whileRunning(Call call) {
  if (!m_running) return ESRCH;
  const RunningHold hold;
  return m_running && m_id != pthread_t{} ? call(m_id) : ESRCH;
}

void Thread::cancel() {
  const int error = whileRunning([this](pthread_t id) {
    m_cancelled = true;
    return pthread_cancel(id);
  });
  if (error != ESRCH) FOKRAZO_CHECK_CALL(error);
}

void Thread::kill() {
  cancel();
  join();
}

void Thread::changePriority(int delta) {
  if (!kHooks.threadPolicy().usesPriorities) return;
  const char* word = delta > 0 ? "Increase" : "Decrease";
  sched_param parameters{};
  int error = whileRunning([&](pthread_t id) {
    int policy = 0;
    return pthread_getschedparam(id, &policy, &parameters);
  });
  if (error != 0) {
    FOKRAZO_HOOK_DEBUG(kLogger, "Can't determine previous thread priority: %d", error);
    return;
  }
  parameters.sched_priority += delta;
  error = whileRunning([&](pthread_t id) { return pthread_setschedparam(id, SCHED_FIFO, &parameters); });
  if (error == 0)
    FOKRAZO_HOOK_DEBUG(kLogger, "%s thread priority to %d", word, parameters.sched_priority);
  else
    FOKRAZO_HOOK_DEBUG(kLogger, "%s thread priority failed: %d", word, error);
}

bool Thread::sleep(long seconds, long nanoseconds) {
  testCancel();
  const timespec time{seconds, nanoseconds};
  const int error = nanosleep(&time, nullptr) == 0 ? 0 : errno;
  testCancel();
  if (error == EINTR) return false;
  FOKRAZO_CHECK_CALL(error);
  return true;
}

bool Thread::sleep(long seconds, int milliseconds, int microseconds, int nanoseconds) {
  return sleep(seconds, (milliseconds * 1000L + microseconds) * 1000L + nanoseconds);
}

void Thread::yield() {
  testCancel();
  if (sched_yield() != 0) FOKRAZO_CHECK_CALL(errno);
}

void Thread::enableKill() {
  if (!threadsSupported()) return;
  FOKRAZO_CHECK_CALL(pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, nullptr));
  pthread_testcancel();
}

void Thread::disableKill() {
  if (threadsSupported()) FOKRAZO_CHECK_CALL(pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr));
}

}  // namespace vesk
