/// Accepts clients.
#pragma once

#include <functional>
#include <memory>

#include "daemon/event_loop.h"
#include "daemon/listening_socket.h"

namespace brondalt {

/// Passes on new connections. If the system has no descriptor or memory for another one, accepting pauses:
/// clients wait in the socket's queue and do not wake the loop. It continues after resume(), and is retried
/// every second, because other processes may free resources.
/// Thread-safety: one thread at a time.
class Acceptor {
 public:
  /// Begins to accept. `take` receives each new connection, which is non-blocking. `loop` and `socket` must
  /// outlive the acceptor.
  Acceptor(EventLoop& loop, ListeningSocket& socket, std::function<void(Descriptor)> take);
  ~Acceptor();
  Acceptor(const Acceptor&) = delete;
  Acceptor& operator=(const Acceptor&) = delete;

  /// Ends a pause. Call it after freeing a descriptor.
  void resume();
  /// Listens on a new socket, as a restarted daemon would, and returns true. After stop() it does nothing and
  /// returns false. @throws Error there is no new socket; the old one stays in use
  bool restart();
  /// Stops accepting for good; the socket stays.
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
  bool m_isRetrySet = false;          // only one timer at a time
  std::shared_ptr<Acceptor*> m_self;  // timers hold it weakly, to detect that this object is gone
};

}  // namespace brondalt
