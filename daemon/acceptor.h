/// Accepts clients while there are descriptors for them.
#pragma once

#include <functional>
#include <memory>

#include "daemon/event_loop.h"
#include "daemon/listening_socket.h"

namespace brondalt {

/// Hands out the connections that clients open. When the system has no descriptor or memory for another one,
/// accepting pauses: clients wait in the queue of the socket and do not wake the loop. It continues when
/// resume() is called, and tries again every second, because other processes may free what was missing.
/// Thread-safety: one thread at a time.
class Acceptor {
 public:
  /// Begins to accept. `take` gets each new connection, which is non-blocking. Both must outlive the
  /// acceptor.
  Acceptor(EventLoop& loop, ListeningSocket& socket, std::function<void(Descriptor)> take);
  ~Acceptor();
  Acceptor(const Acceptor&) = delete;
  Acceptor& operator=(const Acceptor&) = delete;

  /// Ends a pause. Call it when a descriptor has been freed.
  void resume();
  /// Listens anew, as a restarted daemon would, and returns true; after stop() it returns false and does
  /// nothing. @throws Error there is no new socket, and the old one is still in use
  bool restart();
  /// Accepts no more clients, for good; the socket stays.
  void stop();
  /// Stops listening and removes the socket.
  void close();

 private:
  enum class State { Accepting, Paused, Stopped };

  void watch();
  void acceptAll();
  void pause();
  void retryLater();
  void enter(State state);

  EventLoop& m_loop;
  ListeningSocket& m_socket;
  std::function<void(Descriptor)> m_take;
  State m_state = State::Accepting;
  bool m_isRetrySet = false;          // one timer at a time, however often accepting pauses
  std::shared_ptr<Acceptor*> m_self;  // timers hold it weakly, and find out whether this object still exists
};

}  // namespace brondalt
