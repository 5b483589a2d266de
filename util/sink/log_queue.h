/// The background queue of the log, as its neighbours see it. Internal.
#pragma once

#include <list>

#include <boost/shared_ptr.hpp>

namespace vesk {

class QueuedMessage;
class RunQueue;

using QueuedMessages = std::list<boost::shared_ptr<QueuedMessage>>;

/// Messages of a thread that logs with the logger's locks in hand. A post may wait for the queue's runner,
/// and the runner for those locks; so they are posted, in order, when this goes.
/// Belongs to one thread, outside its locks.
class HeldMessages {
 public:
  HeldMessages() = default;
  ~HeldMessages() noexcept(false);
  HeldMessages(const HeldMessages&) = delete;
  HeldMessages& operator=(const HeldMessages&) = delete;

  /// From here to the end of the scope messages for the queue are held. Requires: gLogMessageProtect is held
  /// throughout.
  class Scope {
   public:
    explicit Scope(HeldMessages& held);
    ~Scope();
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    HeldMessages& m_held;
  };

 private:
  QueuedMessages m_messages;
  boost::shared_ptr<RunQueue> m_queue;
};

}  // namespace vesk
