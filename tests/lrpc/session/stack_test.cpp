// What lookups cost their host: what they create, and the stack that a process's first ones use, a failing
// and a successful one, including reading the configuration and opening the log. Host programs have threads
// with stacks of 16 kB.

#include <sys/mman.h>

#include "tests/support/scripted_peer.h"
#include "tests/support/syslog_socket.h"
#include "tests/support/wire.h"
#include "tests/support/world_test.h"
#include "tests/support/wrapped.h"

using namespace testsupport;
using vesk::LocalRpcSession;

namespace {

int gLocks = 0, gOthers = 0;  // locks, and threads and keys, that were created

}  // namespace

WRAPPED(int, pthread_mutex_init, (pthread_mutex_t * mutex, const pthread_mutexattr_t* attributes),
        (++gLocks, __real_pthread_mutex_init(mutex, attributes)))
WRAPPED(int, pthread_create,
        (pthread_t * id, const pthread_attr_t* attributes, void* (*routine)(void*), void* argument),
        (++gOthers, __real_pthread_create(id, attributes, routine, argument)))
WRAPPED(int, pthread_key_create, (pthread_key_t * key, void (*destructor)(void*)),
        (++gOthers, __real_pthread_key_create(key, destructor)))

namespace {

constexpr size_t kLimit = 12 * 1024;
constexpr size_t kStack = 1024 * 1024;
constexpr unsigned char kPaint = 0xa5;

class PaintedThread {
 public:
  template <class Work>
  explicit PaintedThread(Work work)
      : m_bottom(static_cast<unsigned char*>(
            mmap(nullptr, kStack, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))),
        m_work(work) {
    memset(m_bottom, kPaint, kStack);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstack(&attributes, m_bottom, kStack);
    pthread_t thread;
    EXPECT_EQ(pthread_create(&thread, &attributes, run, this), 0);
    EXPECT_EQ(pthread_join(thread, nullptr), 0);
    pthread_attr_destroy(&attributes);
  }
  ~PaintedThread() { munmap(m_bottom, kStack); }

  size_t used() const {
    return m_start - std::find_if(m_bottom, m_start, [](unsigned char byte) { return byte != kPaint; });
  }

 private:
  static void* run(void* object) {
    auto& self = *static_cast<PaintedThread*>(object);
    self.m_start = static_cast<unsigned char*>(__builtin_frame_address(0));
    self.m_work();
    return nullptr;
  }

  unsigned char* m_bottom;
  unsigned char* m_start = nullptr;
  std::function<void()> m_work;
};

class StackTest : public ScratchTest {};

TEST_F(StackTest, AFirstLookupWithALogLineStaysWithinTwelveKilobytes) {
  if (!testsupport::inPrivateWorld()) GTEST_SKIP() << "only in the private world";
  SyslogSocket syslog;
  for (const char* log : {"logger.destination: /var/log/test.log\nlogger.file.flush.frequency: 1\n", ""}) {
    put(vesk::paths::kConfigFile, "log: TRACE\n" + std::string(log) + "site: $SITE\nlrpc.timeout: 60\n");
    put("/var/velmora/kset.site", "here");
    ScriptedPeer peer(in("daemon"));
    const std::string key = integer(0) + integer(2) + integer(0) + integer(0) + integer(0) + octets("al");
    peer.expect(request(11, key)).send(answer(0, object("CN=al,DC=x")));
    checkInChild([&] {
      std::string failure, dn;
      const PaintedThread thread([&] {
        failure = failureOf([&] { LocalRpcSession(in("none"), false, false).getUser("al", 0); });
        dn = LocalRpcSession(in("daemon"), false, false).getUser("al", 0)->getDN();
      });
      EXPECT_NE(failure, "");
      EXPECT_EQ(dn, "CN=al,DC=x");
      EXPECT_LE(thread.used(), kLimit) << log;
    });
    EXPECT_TRUE(peer.finished());
  }
  EXPECT_NE(get("/var/log/test.log").find("lrpc"), std::string::npos);
  EXPECT_FALSE(syslog.texts().empty());
}

// It must stay cheap, and a name service may not bring threads into its host. The test above leaves the
// library unused in this process.
TEST_F(StackTest, ASessionCreatesNoLockThreadOrKey) {
  ScriptedPeer peer(in("daemon"));
  for (const bool isFirst : {true, false}) {
    if (!isFirst) gLocks = gOthers = 0;
    LocalRpcSession session(in("daemon"), false, false);
    for (int i = 0; i < 2; ++i) {
      peer.accept().expect(request(0)).send(reply(0));
      session.ping();
      session.dropConnection();
    }
    EXPECT_EQ(gLocks > 0, isFirst) << "the process-wide ones, at their first use";
  }
  EXPECT_EQ(gOthers, 0);
}

}  // namespace
