/// What the clients of a process keep under one lock, over a fork. Internal.
#pragma once

#include <memory>

#include <fokrazo/mutex.h>
#include <fokrazo/thread_annotations.h>
#include "util/text/made_once.h"
#include "util/thread/fork_locks.h"

namespace vesk {

/// Guards the state of all clients. Held for a few instructions: nobody waits or allocates much under it.
inline Mutex& clientsMutex() {
  return forkedLock(ForkOrder::Clients);
}

/// Begins to count. Any number of times.
void watchLostForks();
/// The number of forks, before and in this process, that did not get the lock: what it guards may be half
/// changed in the child.
unsigned long lostForks();

/// State that a forked child makes again if it cannot trust its copy. The old copy is leaked, never read.
/// Thread-safety: get() under the lock.
template <class State>
class ClientState {
 public:
  ClientState() : m_state(std::make_unique<State>()), m_lostForks(lostForks()) { watchLostForks(); }

  State& get() FOKRAZO_REQUIRES(clientsMutex()) {
    if (m_lostForks != lostForks()) {
      auto fresh = std::make_unique<State>();
      FOKRAZO_LEAKS_ON_PURPOSE(m_state.release());
      m_state = std::move(fresh);
      m_lostForks = lostForks();
    }
    return *m_state;
  }

 private:
  std::unique_ptr<State> m_state;
  unsigned long m_lostForks;
};

}  // namespace vesk
