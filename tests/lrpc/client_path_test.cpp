// What a session makes in a program that has no threads of its own.

#include <pthread.h>

#include "tests/support/session_test.h"

using namespace testsupport;

namespace {

int gLocks = 0;
int gThreads = 0;
int gKeys = 0;

class ClientPathTest : public SessionTest {
 protected:
  void SetUp() override {
    gKeys = 0;  // the test framework has some
    SessionTest::SetUp();
  }
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
  gLocks = 0;
  useASession();
  EXPECT_EQ(gLocks, 0);
  EXPECT_EQ(gThreads, 0);
  EXPECT_EQ(gKeys, 0);
}

}  // namespace

// The library's own calls come by here.
extern "C" {
int __real_pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes);
int __real_pthread_create(pthread_t* id, const pthread_attr_t* attributes, void* (*routine)(void*),
                          void* argument);
int __real_pthread_key_create(pthread_key_t* key, void (*destructor)(void*));

int __wrap_pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes) {
  ++gLocks;
  return __real_pthread_mutex_init(mutex, attributes);
}
int __wrap_pthread_create(pthread_t* id, const pthread_attr_t* attributes, void* (*routine)(void*),
                          void* argument) {
  ++gThreads;
  return __real_pthread_create(id, attributes, routine, argument);
}
int __wrap_pthread_key_create(pthread_key_t* key, void (*destructor)(void*)) {
  ++gKeys;
  return __real_pthread_key_create(key, destructor);
}
}
