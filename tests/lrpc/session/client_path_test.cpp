// What a session makes in a program that has no threads of its own.

#include "tests/support/session_test.h"

using namespace testsupport;

namespace {

int gLocks = 0, gThreads = 0, gKeys = 0;

class ClientPathTest : public SessionTest {
 protected:
  /// One session's life: an exchange, a lost connection, another exchange.
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

TEST_F(ClientPathTest, ASessionMakesNoLockNoThreadAndNoKey) {
  useASession();
  EXPECT_GT(gLocks, 0) << "the process-wide ones, at their first use";
  gLocks = gThreads = gKeys = 0;
  useASession();
  EXPECT_EQ(gLocks + gThreads + gKeys, 0);
}

}  // namespace

// The library's own calls come by here.
#define COUNTED(function, count, parameters, ...) \
  extern "C" int __real_##function parameters;    \
  extern "C" int __wrap_##function parameters {   \
    ++count;                                      \
    return __real_##function(__VA_ARGS__);        \
  }

COUNTED(pthread_mutex_init, gLocks, (pthread_mutex_t * mutex, const pthread_mutexattr_t* attributes), mutex,
        attributes)
COUNTED(pthread_create, gThreads,
        (pthread_t * id, const pthread_attr_t* attributes, void* (*routine)(void*), void* argument), id,
        attributes, routine, argument)
COUNTED(pthread_key_create, gKeys, (pthread_key_t * key, void (*destructor)(void*)), key, destructor)
