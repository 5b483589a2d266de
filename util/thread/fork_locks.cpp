#include "util/thread/fork_locks.h"

#include <pthread.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <new>

#include <fokrazo/mutex.h>

namespace vesk {
namespace {

constexpr auto kCount = static_cast<size_t>(ForkOrder::Count);
using Slots = std::array<std::atomic<Mutex*>, kCount>;

Slots gSlots{};                                      // null: not in use yet
thread_local std::array<Mutex*, kCount> gHeld = {};  // by the fork that is under way

// Behind the innermost lock that this thread holds already; 0 if it holds none.
size_t behindOwn() {
  for (size_t i = kCount; i > 0; --i) {
    const Mutex* mutex = gSlots[i - 1].load(std::memory_order_acquire);
    if (mutex && pthread_equal(mutex->owner(), pthread_self())) return i;
  }
  return 0;
}

// A thread that holds one of them already must not wait for those in front of it: who has these may wait for
// that one. What it does not get is fresh in the child all the same. (The compiler cannot follow holds that
// one function takes and another gives back.)
void beforeFork() FOKRAZO_NO_THREAD_SAFETY_ANALYSIS {
  const size_t waitFrom = behindOwn();
  for (size_t i = 0; i < kCount; ++i) {
    gHeld[i] = gSlots[i].load(std::memory_order_acquire);
    if (!gHeld[i]) continue;
    if (i >= waitFrom)
      gHeld[i]->lock();
    else if (!gHeld[i]->tryLock())
      gHeld[i] = nullptr;
  }
}

void inParent() FOKRAZO_NO_THREAD_SAFETY_ANALYSIS {
  for (size_t i = kCount; i > 0; --i)
    if (gHeld[i - 1]) gHeld[i - 1]->unLock();
}

// The system ties a recursive mutex to a thread's number, and the child's only thread has a new one: the
// mutexes cannot be given back there, they are made anew. What the forking thread held besides, it holds
// again.
void makeAnew(Mutex& mutex, bool isHeld) FOKRAZO_NO_THREAD_SAFETY_ANALYSIS {
  unsigned int holds = isHeld && mutex.lockDepth() > 0 ? mutex.lockDepth() - 1 : 0;
  new (&mutex) Mutex;
  for (; holds > 0; --holds) mutex.lock();
}

void inChild() {
  for (size_t i = 0; i < kCount; ++i)
    if (Mutex* mutex = gSlots[i].load(std::memory_order_acquire)) makeAnew(*mutex, gHeld[i] != nullptr);
}

// The process that is about to have its forks handled; a child begins anew if it was copied just then.
constexpr pid_t kNobody = 0;
constexpr pid_t kDone = -1;
std::atomic<pid_t> gKeeper{kNobody};

}  // namespace

void keepLocksOverFork() {
  pid_t keeper = gKeeper.load(std::memory_order_acquire);
  if (keeper == kDone) return;
  const pid_t self = getpid();
  if (keeper == self || !gKeeper.compare_exchange_strong(keeper, self)) return;
  gKeeper = pthread_atfork(beforeFork, inParent, inChild) == 0 ? kDone : kNobody;
}

Mutex& heldOverFork(ForkOrder place, Mutex& mutex) {
  gSlots[static_cast<size_t>(place)].store(&mutex, std::memory_order_release);
  return mutex;
}

}  // namespace vesk
