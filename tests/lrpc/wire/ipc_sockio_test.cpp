// The socket: connecting, waiting, moving bytes, and each way to fail.

#include "tests/support/scripted_peer.h"
#include "tests/support/thrown.h"
#include "tests/support/world_test.h"
#include "tests/support/wrapped.h"
#include "util/file/unique_fd.h"

using namespace vesk;
using namespace testsupport;

namespace {

using Clock = std::chrono::steady_clock;

bool gConnectLater = false;  // connect succeeds but returns EINPROGRESS
bool gNeverReady = false;    // poll times out
int gInterruptions = 0;      // calls that still end in EINTR, each after two milliseconds
Clock::time_point gNow;      // by the test's clock
thread_local std::vector<int> gPollTimeouts;

int connected(int rc) {
  if (!gConnectLater) return rc;
  errno = EINPROGRESS;
  return -1;
}

// The test's own calls wait for two descriptors.
int polled(pollfd* entries, nfds_t count, int timeout);

int withOtherPeer(int rc, int name, void* value) {
  auto* peer = static_cast<ucred*>(value);
  if (rc == 0 && name == SO_PEERCRED) *peer = {peer->pid, peer->uid + 1, peer->gid + 2};
  return rc;
}

}  // namespace

WRAPPED(int, connect, (int fd, const sockaddr* address, socklen_t size),
        connected(__real_connect(fd, address, size)))
WRAPPED(int, poll, (pollfd * entries, nfds_t count, int timeout), polled(entries, count, timeout))
WRAPPED(int, getsockopt, (int fd, int level, int name, void* value, socklen_t* size),
        withOtherPeer(__real_getsockopt(fd, level, name, value, size), name, value))
Clock::time_point wrappedNow() __asm__("__wrap__ZNSt6chrono3_V212steady_clock3nowEv");
Clock::time_point wrappedNow() {
  return gNow;
}

namespace {

int polled(pollfd* entries, nfds_t count, int timeout) {
  if (count > 1) return __real_poll(entries, count, timeout);
  gPollTimeouts.push_back(timeout);
  if (gNeverReady) return 0;
  if (gInterruptions == 0) return __real_poll(entries, count, timeout);
  --gInterruptions;
  gNow += std::chrono::milliseconds(2);
  errno = EINTR;
  return -1;
}

std::string gone(const char* what, int code, const char* why) {
  return "ConnectionBrokenException " + std::to_string(code) + " " + what + ": " + why;
}

class SockioTest : public WorldTest {
 protected:
  void SetUp() override {
    WorldTest::SetUp();
    configure("lrpc.timeout: 0\n");
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends), 0);
    m_own = UniqueFd(ends[0]);
    m_other = UniqueFd(ends[1]);
    gPollTimeouts.clear();
  }
  void TearDown() override {
    gConnectLater = gNeverReady = false;
    gInterruptions = 0;
    m_own.close();
    m_other.close();
    WorldTest::TearDown();
  }

  std::string readThrows() {
    return thrownBy([&] {
      unsigned char byte;
      readN(m_own.get(), &byte, 1);
    });
  }

  UniqueFd m_own;
  UniqueFd m_other;
};

TEST_F(SockioTest, AConnectionNeverBlocksAndALongPathIsCut) {
  const std::string cut = "/tmp/" + std::string(102, 'p');
  const ScriptedPeer peer(cut);
  const UniqueFd socket(IPCconnect(cut + "more"));
  EXPECT_TRUE(fcntl(socket.get(), F_GETFL) & O_NONBLOCK);
  EXPECT_EQ(fcntl(socket.get(), F_GETFD), 0) << "close-on-exec";
  unsigned int uid = 9999, gid = 9999;
  EXPECT_TRUE(read_peer_cred(socket.get(), uid, gid));
  EXPECT_EQ(uid, getuid() + 1);
  EXPECT_EQ(gid, getgid() + 2);
}

TEST_F(SockioTest, WaitsForASlowConnect) {
  const std::string path = in("socket");
  gConnectLater = true;
  auto peer = std::make_unique<ScriptedPeer>(path);
  const std::tuple<std::string, int, bool> rows[] = {
      {"0", 5000, false}, {"-1", 5000, false}, {"3", 3000, true}, {"33554432w", INT_MAX, true}};
  for (const auto& [value, milliseconds, isLegal] : rows) {
    configure("lrpc.connect.timeout: " + value + "\n");
    forgetLog();
    gPollTimeouts.clear();
    IPCdisconnect(IPCconnect(path));
    EXPECT_EQ(gPollTimeouts, std::vector<int>{milliseconds}) << value;
    EXPECT_EQ(isLogged("Illegal value for lrpc.connect.timeout: " + value + ". Using 5"), !isLegal);
  }
  peer.reset();  // a socket that is not connected hangs up
  EXPECT_EQ(thrownBy([&] { IPCconnect(path); }), "IOException 1 ipc socket connect: Success");
  gNeverReady = true;
  EXPECT_EQ(thrownBy([&] { IPCconnect(path); }), "IOException 0 ipc socket connect timed out");
  EXPECT_TRUE(isLogged("Timed out while waiting for socket connection"));
}

TEST_F(SockioTest, AWaitFindsAPeerReadySilentOrGone) {
  EXPECT_EQ(RecvWait(m_own.get(), 0), 0);
  EXPECT_EQ(SendWait(m_own.get(), 0), 1);
  ASSERT_EQ(write(m_other.get(), "x", 1), 1);
  gInterruptions = 3;
  EXPECT_EQ(RecvWait(m_own.get(), 100), 1);
  EXPECT_EQ(gPollTimeouts.back(), 100000 - 3 * 2) << "the time that is left";
  EXPECT_EQ(IOWait(m_own.get(), 0, POLLIN | POLLPRI), -1) << "one of two events is not what was asked for";
  EXPECT_EQ(errno, 0);
  m_other.close();
  EXPECT_EQ(RecvWait(m_own.get(), 0), -1) << "though a byte is there";
  EXPECT_EQ(errno, 0);
  EXPECT_EQ(RecvWait(1 << 20, 0), -1);
  int error = 0;
  EXPECT_EQ(zantrel_pselect(-1, nullptr, nullptr, nullptr, nullptr, nullptr, &error), -1);
  EXPECT_EQ(error, EINVAL);
}

TEST_F(SockioTest, EachFailureHasItsMessageAndRaisesNoSignal) {
  std::vector<unsigned char> bytes(16 << 20);
  const auto size = static_cast<unsigned int>(bytes.size());
  EXPECT_EQ(readThrows(), "TimeoutException 0 RecvWait out");
  EXPECT_EQ(thrownBy([&] { writeN(m_own.get(), bytes.data(), size); }), "TimeoutException 0 write timed out");
  EXPECT_EQ(thrownBy([&] { writeMsg(m_other.get(), bytes.data(), 0, false); }),
            gone("writeMsg failed", 0, "Success"));
  shutdown(m_other.get(), SHUT_WR);
  EXPECT_EQ(readThrows(), "ConnectionBrokenException 0 readMsg: brondalt closed connection");
  m_other.close();
  EXPECT_EQ(readThrows(), gone("read select error", 0, "Success"));
  EXPECT_EQ(thrownBy([&] { writeN(m_own.get(), bytes.data(), 1); }),
            gone("writeMsg failed", -1, strerror(EPIPE)));

  const UniqueFd file(open("/dev/zero", O_RDONLY));
  EXPECT_EQ(thrownBy([&] { readN(file.get(), bytes.data(), 1); }),
            gone("readMsg error", -1, strerror(ENOTSOCK)));
  EXPECT_EQ(thrownBy([&] { readN(-1, bytes.data(), 0); }), "nothing");
  unsigned int uid = 5, gid = 6;
  EXPECT_FALSE(read_peer_cred(file.get(), uid, gid));
  EXPECT_EQ(uid * 10 + gid, 56u);
}

}  // namespace
