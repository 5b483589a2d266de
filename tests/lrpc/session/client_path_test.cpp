// What a session creates in a single-threaded program.

#include "tests/support/session_test.h"
#include "tests/support/wrapped.h"

using namespace testsupport;

namespace {

int gLocks = 0, gThreads = 0, gKeys = 0;

class ClientPathTest : public SessionTest {
 protected:
  /// A session: an exchange, a lost connection, another exchange.
  void useASession() {
    startSession(false);
    for (int i = 0; i < 2; ++i) {
      peer().accept().expect(ping).send(pong);
      session().ping();
      session().dropConnection();
    }
    EXPECT_TRUE(peer().finished());
  }
};

TEST_F(ClientPathTest, ASessionCreatesNoLockThreadOrKey) {
  useASession();
  EXPECT_GT(gLocks, 0) << "the process-wide ones, at their first use";
  gLocks = gThreads = gKeys = 0;
  useASession();
  EXPECT_EQ(gLocks + gThreads + gKeys, 0);
}

}  // namespace

// clang-format off
WRAPPED(int, pthread_mutex_init, (pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes), ++gLocks, __real_pthread_mutex_init(mutex, attributes))
WRAPPED(int, pthread_create, (pthread_t* id, const pthread_attr_t* attributes, void* (*routine)(void*), void* argument), ++gThreads, __real_pthread_create(id, attributes, routine, argument))
WRAPPED(int, pthread_key_create, (pthread_key_t* key, void (*destructor)(void*)), ++gKeys, __real_pthread_key_create(key, destructor))
