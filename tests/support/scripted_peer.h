/// A daemon for tests that follows a script, byte by byte.
#pragma once

#include <deque>

#include "tests/support/prelude.h"
#include "tests/support/wire.h"
#include "util/file/unique_fd.h"

namespace testsupport {

/// Listens on a unix socket and works through a script in a thread of its own, one connection at a time. The
/// calls below add a step to the script, also while it runs, and return at once:
///
///   peer.expect(request(0)).sendRaw("cut").hangUp();
///   peer.accept().expect(request(0)).send(reply(0));
///   session.ping();
///   EXPECT_TRUE(peer.finished());
///
/// Messages are given without their frame (see tests/support/wire.h). Every wait is bounded. A step that
/// fails ends the script and closes the connection and the socket, so that the client does not wait.
class ScriptedPeer {
 public:
  using Step = std::function<void()>;

  explicit ScriptedPeer(const std::string& path);
  ~ScriptedPeer();

  /// Closes the connection, if there is one, and takes the next.
  ScriptedPeer& accept() {
    return then([this] { acceptNow(); });
  }
  /// Reads one frame, which must be that message. Accepts a connection first if there is none.
  ScriptedPeer& expect(const std::string& message);
  /// Waits until the client closes the connection; it must not send another byte.
  ScriptedPeer& expectClosed();

  ScriptedPeer& send(const std::string& message) { return sendRaw(framed(message)); }
  ScriptedPeer& sendRaw(const std::string& bytes) {
    return then([this, bytes] { sendNow(bytes); });
  }

  ScriptedPeer& then(Step step);
  /// hangUp closes the connection once the client has received everything; endStream ends only the direction
  /// to the client.
  ScriptedPeer& hangUp() {
    return then([this] { closeNow(); });
  }
  ScriptedPeer& endStream() {
    return then([this] { shutdown(m_connection.get(), SHUT_WR); });
  }
  ScriptedPeer& down();

  /// Waits for the script. Succeeds if every step did, and the client has sent or opened nothing more.
  ::testing::AssertionResult finished();

 private:
  void run();
  void waitFor(int fd);
  std::string receive(size_t size);
  void acceptNow();
  void sendNow(const std::string& bytes);
  void closeNow();
  void listen();
  void checkSilence();

  const std::string m_path;
  vesk::UniqueFd m_wake;  // readable once the test is over
  // The thread's own while it runs.
  vesk::UniqueFd m_listener;
  vesk::UniqueFd m_connection;

  std::mutex m_mutex;  // guards what follows
  std::condition_variable m_changed;
  std::deque<Step> m_script;
  bool m_working = false;
  bool m_over = false;
  std::string m_failure;

  std::thread m_thread;
};

}  // namespace testsupport
