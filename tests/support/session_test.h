/// A fixture with a session, and a scripted daemon at its other end.
#pragma once

#include <fokrazo/session.h>
#include "tests/support/scripted_peer.h"
#include "tests/support/thrown.h"
#include "tests/support/wire.h"
#include "tests/support/world_test.h"
#include "util/thread/clock.h"

namespace testsupport {

class SessionTest : public WorldTest {
 protected:
  void SetUp() override {
    WorldTest::SetUp();
    if (IsSkipped()) return;
    configure("lrpc.timeout: 60\n");
    path = in("daemon");
    m_peer = std::make_unique<ScriptedPeer>(path);
    startSession(false);
  }
  /// The script must have ended, and the client must not have sent or opened anything more.
  void TearDown() override {
    EXPECT_TRUE(!m_peer || m_peer->finished());
    m_session.reset();
    m_peer.reset();
    vesk::dayclock::offset = 0;
    WorldTest::TearDown();
  }

  void startSession(bool authenticate) {
    m_session = std::make_unique<vesk::LocalRpcSession>(path, false, authenticate);
  }

  vesk::LocalRpcSession& session() { return *m_session; }
  ScriptedPeer& peer() { return *m_peer; }
  std::string pingThrows() {
    return thrownBy([this] { session().ping(); });
  }

  std::string path;
  const std::string ping = request(0);
  const std::string pong = reply(0);

 private:
  std::unique_ptr<ScriptedPeer> m_peer;
  std::unique_ptr<vesk::LocalRpcSession> m_session;
};

}  // namespace testsupport
