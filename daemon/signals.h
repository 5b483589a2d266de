/// Signals as events of the loop.
#pragma once

#include <functional>
#include <initializer_list>

#include "daemon/descriptor.h"

namespace brondalt {

class EventLoop;

/// Takes signals out of asynchronous delivery: they arrive as readable events, between two other events, so a
/// busy daemon neither misses nor delays them. Also ignores SIGPIPE.
/// Make it before any thread starts: threads inherit the blocked signals. They stay blocked for good.
class Signals {
 public:
  /// @throws Error
  explicit Signals(std::initializer_list<int> numbers);

  /// Calls `handle` with the number of each signal. Requires: the process that calls has not forked since it
  /// made the loop, because a loop reports the signals of the process that registered them.
  void deliver(EventLoop& loop, std::function<void(int)> handle);

 private:
  Descriptor m_queue;
};

}  // namespace brondalt
