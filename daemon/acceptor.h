/// Accepts clients while there are descriptors for them.
#pragma once

#include <functional>
#include <memory>

#include "daemon/event_loop.h"
#include "daemon/listening_socket.h"

namespace brondalt {

/// Hands out the connections that clients open. When the system has no descriptor or memory for another one,
/// accepting pauses: clients wait in the queue of the socket, and the loop is not woken by them. It goes on
/// as soon as resume() is called, and tries again every second, because others may free what was missing.
/// Thread-safety: one thread at a time.
class Acceptor {
 public:
  /// Begins to accept. `take` gets each new connection, which is non-blocking. Both must outlive the
  /// acceptor.
  Acceptor(EventLoop& loop, ListeningSocket& socket, std::function<void(Descriptor)> take);
  ~Acceptor();
  Acceptor(const Acceptor&) = delete;
  Acceptor& operator=(const Acceptor&) = delete;

  /// To be called when a descriptor has been freed.
  void resume();
  /// Listens anew, as a restarted daemon would. @throws Error
  void restart();
  /// Accepts no more; the socket stays.
  void pause();
  /// Stops listening and removes the socket.
  void close();
  bool isPaused() const { return m_isPaused; }

 private:
  void watch();
  void acceptAll();
  void waitForResources();

  EventLoop& m_loop;
  ListeningSocket& m_socket;
  std::function<void(Descriptor)> m_take;
  bool m_isPaused = false;
  std::shared_ptr<Acceptor*> m_self;  // timers hold it weakly, and find out whether this object still exists
};

}  // namespace brondalt
