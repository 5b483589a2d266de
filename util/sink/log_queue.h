/// Messages held back from the background queue. Internal.
#pragma once

#include <list>

#include <boost/shared_ptr.hpp>

#include "util/log/log_internal.h"

namespace vesk {

class QueuedMessage;
class RunQueue;

using QueuedMessages = std::list<boost::shared_ptr<QueuedMessage>>;

/// Messages of a thread that logs while it holds the logger's locks. Writing may take long, and a post to the
/// queue may wait for the queue's runner, which may need those locks. So messages are held, and written or
/// posted in order when this object is destroyed. Belongs to one thread. Declare it before the locks, so that
/// it is destroyed after they are released.
class HeldMessages {
 public:
  HeldMessages() = default;
  ~HeldMessages() noexcept(false);
  HeldMessages(const HeldMessages&) = delete;
  HeldMessages& operator=(const HeldMessages&) = delete;

  /// Holds messages until the end of this scope. Requires: gLogMessageProtect is held throughout.
  class Scope {
   public:
    explicit Scope(HeldMessages& held) FOKRAZO_REQUIRES(gLogMessageProtect());
    ~Scope();
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    HeldMessages& m_held;
  };

 private:
  QueuedMessages m_messages;
  boost::shared_ptr<RunQueue> m_queue;  // null: write directly
};

/// For the child of a fork: leaves the queue to the parent. The child writes directly to the destination, and
/// may start its own thread.
void forgetQueueAfterFork();

}  // namespace vesk
