#include "util/thread/fork_locks.h"

#include <pthread.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <ctime>
#include <memory>
#include <new>

#include "util/thread/mutex_internal.h"
#include "util/thread/thread_internal.h"

namespace vesk {
namespace {

constexpr auto kCount = static_cast<size_t>(ForkOrder::Count);
constexpr long kMaxWait = 100'000'000;  // nanoseconds; for all locks together

std::array<std::atomic<Mutex*>, kCount> gLocks{};          // null: not yet used
std::array<std::atomic<ForkedChild>, kCount> gChildren{};  // null: none
thread_local std::array<Mutex*, kCount> gHeld{};           // by the current fork
thread_local bool gForksAmongThreads = false;
std::atomic<bool> gIsChildOfThreads{false};

// One past the innermost lock that this thread already holds; 0 if none.
size_t afterOwnLocks() {
  for (size_t i = kCount; i > 0; --i) {
    const Mutex* mutex = gLocks[i - 1].load(std::memory_order_acquire);
    if (mutex && pthread_equal(mutex->owner(), pthread_self())) return i;
  }
  return 0;
}

timespec endOfPatience() {
  timespec end;
  clock_gettime(CLOCK_MONOTONIC, &end);
  end.tv_nsec += kMaxWait;
  end.tv_sec += end.tv_nsec / 1'000'000'000;
  end.tv_nsec %= 1'000'000'000;
  return end;
}

// A thread that holds a lock must not wait for an earlier one, whose holder may be waiting for this thread's
// lock.
void beforeFork() {
  gForksAmongThreads = Thread::locksCount();
  const size_t waitFrom = afterOwnLocks();
  const timespec end = endOfPatience();
  for (size_t i = 0; i < kCount; ++i) {
    Mutex* const mutex = gLocks[i].load(std::memory_order_acquire);
    const bool held = mutex && (i >= waitFrom ? lockUntil(*mutex, end) : mutex->tryLock());
    gHeld[i] = held ? mutex : nullptr;
  }
}

// The compiler cannot follow locks that another function has taken.
void inParent() FOKRAZO_NO_THREAD_SAFETY_ANALYSIS {
  for (size_t i = kCount; i > 0; --i)
    if (gHeld[i - 1]) gHeld[i - 1]->unLock();
}

// A recursive mutex belongs to a thread id, and the child's only thread has a new one, so it could not
// release the mutex. Locks that the forking thread held before the fork are locked again.
void renew(Mutex& mutex, bool isHeld) FOKRAZO_NO_THREAD_SAFETY_ANALYSIS {
  unsigned int holds = isHeld && mutex.lockDepth() > 0 ? mutex.lockDepth() - 1 : 0;
  new (&mutex) Mutex;
  for (; holds > 0; --holds) mutex.lock();
}

void inChild() {
  if (gForksAmongThreads) gIsChildOfThreads = true;
  threadsInChild();
  for (size_t i = 0; i < kCount; ++i)
    if (Mutex* mutex = gLocks[i].load(std::memory_order_acquire)) renew(*mutex, gHeld[i] != nullptr);
  for (size_t i = 0; i < kCount; ++i) {
    const bool inUse = gLocks[i].load(std::memory_order_acquire) != nullptr;
    if (const ForkedChild function = gChildren[i].load(std::memory_order_acquire))
      function(!inUse || gHeld[i] != nullptr);
  }
}

// At load time, so that no fork can precede it.
__attribute__((constructor)) void handleForks() {
  pthread_atfork(beforeFork, inParent, inChild);
}

}  // namespace

Mutex& forkedLock(ForkOrder place) {
  std::atomic<Mutex*>& slot = gLocks[static_cast<size_t>(place)];
  if (Mutex* made = slot.load(std::memory_order_acquire)) return *made;
  auto own = std::make_unique<Mutex>();
  Mutex* first = nullptr;
  if (slot.compare_exchange_strong(first, own.get(), std::memory_order_acq_rel)) return *own.release();
  return *first;
}

Mutex& heldOverFork(ForkOrder place, Mutex& mutex) {
  std::atomic<Mutex*>& slot = gLocks[static_cast<size_t>(place)];
  if (slot.load(std::memory_order_relaxed) != &mutex) slot.store(&mutex, std::memory_order_release);
  return mutex;
}

bool isChildOfThreads() {
  return gIsChildOfThreads.load(std::memory_order_relaxed);
}

void inForkedChild(ForkOrder place, ForkedChild function) {
  gChildren[static_cast<size_t>(place)].store(function, std::memory_order_release);
}

}  // namespace vesk
