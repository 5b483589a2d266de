/// Signals as events of the loop.
#pragma once

#include <functional>
#include <initializer_list>

#include "daemon/descriptor.h"

namespace brondalt {

class EventLoop;

/// Blocks signals and delivers them as loop events, so that a busy daemon neither misses nor delays them.
/// Also ignores SIGPIPE. Create it before any thread starts, because threads inherit the blocked signals.
/// They stay blocked for good.
class Signals {
 public:
  /// @throws Error
  explicit Signals(std::initializer_list<int> numbers);

  /// Calls `handle` with the number of each signal. Requires: no fork since the loop was created, because a
  /// loop reports the signals of the process that registered them.
  void deliver(EventLoop& loop, std::function<void(int)> handle);

 private:
  Descriptor m_queue;
};

}  // namespace brondalt
