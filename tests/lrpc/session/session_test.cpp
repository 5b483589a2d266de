// The core of a session: its connection, the exchange, the second attempt, and the status block.

#include <future>

#include "tests/support/session_test.h"
#include "tests/support/wrapped.h"
#include "util/file/unique_fd.h"

using namespace vesk;
using namespace testsupport;

namespace {

pid_t gPid = 77;      // of the parent and of a child, as in another namespace of process ids
uid_t gOtherUid = 0;  // added to the effective ids
gid_t gOtherGid = 0;
std::atomic<uid_t> gPeerUid{0};  // added to the peer's user id
int gSocketType = 0;             // of the last socket

int withOtherPeer(int rc, int name, void* value) {
  if (name == SO_PEERCRED) static_cast<ucred*>(value)->uid += gPeerUid;
  return rc;
}

}  // namespace

WRAPPED(time_t, time, (time_t*), 1000000000)  // only dayclock's offset changes the time
WRAPPED(pid_t, getpid, (), gPid)
WRAPPED(uid_t, geteuid, (), __real_geteuid() + gOtherUid)
WRAPPED(gid_t, getegid, (), __real_getegid() + gOtherGid)
WRAPPED(int, socket, (int domain, int type, int protocol),
        __real_socket(domain, gSocketType = type, protocol))
WRAPPED(int, getsockopt, (int fd, int level, int name, void* value, socklen_t* size),
        withOtherPeer(__real_getsockopt(fd, level, name, value, size), name, value))

namespace {

const std::string kBroken = "ConnectionBrokenException";
const std::string kBadData = "SystemException 2 Unsuccesful IPC execute: bad data";

class SessionCoreTest : public SessionTest {
 protected:
  void exchange() {
    peer().expect(ping).send(pong);
    session().ping();
  }
  void exchangeOnNewConnection() {
    peer().accept();
    exchange();
  }
  // A request that is sent once.
  std::string stopThrows() {
    return thrownBy([this] { session().stop(); });
  }
  bool hasLogged(const std::string& text) {
    const bool found = isLogged(text);
    forgetLog();
    return found;
  }
};

TEST_F(SessionCoreTest, ConnectsOnTheFirstRequestOrImmediately) {
  EXPECT_EQ(session().socket(), -1);
  exchange();
  EXPECT_TRUE(peer().down().finished());
  session().lostConnection();
  session().lostConnection();
  EXPECT_EQ(session().socket(), -1);
  LocalRpcSession eager(path, true, false);
  const std::string failure = "ipc socket connect: No such file or directory";
  EXPECT_TRUE(hasLogged("LRPC connection failed: (IOException) " + failure));
  EXPECT_EQ(thrownBy([&] { eager.ping(); }), "IOException 1 " + failure);
  EXPECT_FALSE(hasLogged("Cannot communicate"));
}

TEST_F(SessionCoreTest, AnIdleConnectionIsReplaced) {
  const std::tuple<std::string, long, bool> rows[] = {
      {"", 30, true}, {"", 31, false}, {"abc", 0, true}, {"abc", 1, false}, {"7m", 7, true}};
  for (const auto& [timeout, idle, kept] : rows) {
    configure("lrpc.timeout: 60\nlrpc.session.timeout: " + timeout + "\n");
    session().dropConnection();
    exchangeOnNewConnection();
    forgetLog();
    dayclock::offset += idle;
    if (!kept) peer().expectClosed().accept();
    exchange();
    EXPECT_EQ(hasLogged("dropping old lrpc connection"), !kept) << timeout << " " << idle;
    EXPECT_TRUE(peer().finished());
  }
  // Idle time starts at the end of the exchange.
  peer().expect(ping).then([] { dayclock::offset += 8; }).send(pong);
  session().ping();
  dayclock::offset += 5;
  exchange();
}

TEST_F(SessionCoreTest, AForkedChildOpensItsOwnConnection) {
  exchange();
  const int socket = session().socket();
  // The child finds no daemon: its request must not use the parent's connection.
  const std::string elsewhere = path + ".away";
  ASSERT_EQ(rename(path.c_str(), elsewhere.c_str()), 0);
  checkInChild([&] {
    EXPECT_EQ(fcntl(socket, F_GETFD), -1) << "the child's copy is closed at once";
    EXPECT_NE(pingThrows().find("ipc socket connect"), std::string::npos);
    EXPECT_EQ(session().socket(), -1);
  });
  ASSERT_EQ(rename(elsewhere.c_str(), path.c_str()), 0);
  EXPECT_TRUE(hasLogged("process forked, closing parent's connection"));
  exchange();
  EXPECT_EQ(session().socket(), socket);

  gPid = 78;  // a child without fork handlers
  peer().expectClosed().accept();
  exchange();
  gPid = 77;
  peer().expectClosed().accept();
  exchange();
}

TEST_F(SessionCoreTest, AForkClosesTheChildsCopiesOfEverySessionAndNothingElse) {
  std::list<LocalRpcSession> sessions;
  for (int count = 1; count <= 8; ++count) {  // each has the highest number so far
    sessions.emplace_back(path, true, false);
    checkInChild([&] {
      for (const LocalRpcSession& each : sessions) EXPECT_EQ(fcntl(each.socket(), F_GETFD), -1) << count;
    });
  }
  const int reused = sessions.back().socket();
  const UniqueFd file(open("/dev/null", O_RDONLY));
  ASSERT_EQ(dup2(file.get(), reused), reused);
  checkInChild([&] { EXPECT_NE(fcntl(reused, F_GETFD), -1) << "what the program has put there"; });
  peer().accept();  // the waiting ones
  for (size_t waiting = 1; waiting < sessions.size(); ++waiting) peer().accept();
  sessions.clear();
  close(reused);  // last: the peer must not get the number while a session has it
}

TEST_F(SessionCoreTest, TheDescriptorIsPrivateAndAboveTheStandardOnes) {
  peer().expect(ping).send(pong);
  checkInChild([this] {
    for (const int standard : {0, 1, 2}) close(standard);
    session().ping();
    EXPECT_GT(session().socket(), 2);
    EXPECT_EQ(fcntl(session().socket(), F_GETFD), FD_CLOEXEC);
    EXPECT_TRUE(gSocketType & SOCK_CLOEXEC) << "from birth";
    for (const int standard : {0, 1, 2}) {
      struct stat info;
      EXPECT_FALSE(fstat(standard, &info) == 0 && S_ISSOCK(info.st_mode)) << standard;
    }
  });
}

TEST_F(SessionCoreTest, AChangedEffectiveUserOrGroupNeedsANewConnection) {
  for (gid_t* id : {&gOtherUid, &gOtherGid})
    for (const gid_t other : {1, 0}) {  // privileges dropped and regained
      exchangeOnNewConnection();
      peer().expectClosed().accept();
      *id = other;
      exchange();
      EXPECT_TRUE(hasLogged("dropping lrpc connection of another user or group"));
      EXPECT_TRUE(peer().finished());
    }
}

// Unrequested data, or the end of the stream, before the next request.
TEST_F(SessionCoreTest, AConnectionWithSomethingToReadIsReplaced) {
  const std::string spare[] = {framed(pong), framed(pong).substr(0, 3), ""};
  for (const std::string& bytes : spare)
    for (const bool isSentOnce : {true, false}) {
      peer().accept().expect(ping).sendRaw(framed(pong) + bytes);
      if (bytes.empty()) peer().endStream();
      session().ping();
      ASSERT_TRUE(bytes.empty() ? peer().finished() : testing::AssertionSuccess());
      peer().expectClosed().accept().expect(isSentOnce ? request(1) : ping).send(pong);
      isSentOnce ? session().stop() : session().ping();
      EXPECT_TRUE(hasLogged("dropping lrpc connection that brondalt has closed or written to unasked"));
      EXPECT_FALSE(hasLogged("Cannot communicate"));
      EXPECT_TRUE(peer().finished());
    }
}

TEST_F(SessionCoreTest, EachConnectionIsCheckedForTheTrustedPeerBeforeSending) {
  const std::string own = std::to_string(getuid()), other = std::to_string(getuid() + 1);
  exchange();
  startSession(true);
  session().setTrustedPeer(getuid() + 1);
  peer().accept().expectClosed();
  EXPECT_EQ(pingThrows(), "IOException 13 ipc socket peer has uid " + own + " instead of " + other);
  EXPECT_EQ(session().socket(), -1);
  ASSERT_TRUE(peer().finished());

  startSession(false);
  peer().accept().expect(ping).send(pong);
  session().ping();
  peer().expectClosed();
  session().setTrustedPeer(getuid());
  EXPECT_EQ(session().socket(), -1);
  exchangeOnNewConnection();
  peer().expect(ping).then([] { gPeerUid = 1; }).hangUp().accept().expectClosed();  // at the second attempt
  EXPECT_EQ(pingThrows(), "IOException 13 ipc socket peer has uid " + other + " instead of " + own);
  gPeerUid = 0;
}

TEST_F(SessionCoreTest, APasswordForALoginGoesOnceToANewConnection) {
  const std::string validate = request(3, octets("al") + octets("pw") + integer(0));
  exchange();
  peer().expectClosed().accept().expect(validate).hangUp();
  EXPECT_NE(thrownBy([this] { session().validatePlainTextUserOnce("al", Shredder("pw"), false); }),
            "nothing");
  peer().accept().expect(validate).send(answer(2));
  EXPECT_EQ(session().validatePlainTextUserOnce("al", Shredder("pw"), false), VR_INVALID_PASSWORD);
}

TEST_F(SessionCoreTest, ASecondThreadIsRefusedAndTheFirstIsUndisturbed) {
  std::promise<void> asked, refused;
  peer()
      .expect(ping)
      .then([&] {
        asked.set_value();
        refused.get_future().wait();
      })
      .send(pong);
  std::string first;
  std::thread thread([&] { first = pingThrows(); });
  asked.get_future().wait();
  const std::string busy = "SystemException 16 session in use by another thread";
  const int socket = session().socket();
  EXPECT_EQ(pingThrows(), busy);
  EXPECT_EQ(stopThrows(), busy);
  EXPECT_EQ(thrownBy([this] { session().dropConnection(); }), busy);
  EXPECT_EQ(thrownBy([this] { session().setTrustedPeer(0); }), busy);
  EXPECT_EQ(session().socket(), socket);
  refused.set_value();
  thread.join();
  EXPECT_EQ(first, "nothing");
  exchange();  // the next thread may use it
}

TEST_F(SessionCoreTest, ADescriptorThatTheProgramHasReusedIsLeftAlone) {
  const UniqueFd file(open(in("file").c_str(), O_RDWR | O_CREAT, 0600));
  const UniqueFd other(::socket(AF_UNIX, SOCK_STREAM, 0));
  // A descriptor that reuses the number (-1 leaves it closed), the idle time, the reason.
  const std::tuple<int, long, const char*> rows[] = {{file.get(), 0, "lrpc connection reopened "},
                                                     {other.get(), 0, "lrpc connection reopened "},
                                                     {file.get(), 60, "dropping old lrpc connection"},
                                                     {-1, 0, "lrpc connection reopened 0 != "}};
  for (const auto& [theirs, idle, reason] : rows) {
    exchangeOnNewConnection();
    const int number = session().socket();
    close(number);
    const UniqueFd reused(theirs >= 0 ? dup2(theirs, number) : -1);
    dayclock::offset += idle;
    exchangeOnNewConnection();
    EXPECT_TRUE(hasLogged(reason)) << reason;
    session().dropConnection();
    EXPECT_EQ(fcntl(number, F_GETFD), reused ? 0 : -1);
  }
  EXPECT_EQ(std::filesystem::file_size(in("file")), 0u);
}

TEST_F(SessionCoreTest, TheSecondFailureIsThrown) {
  const std::pair<std::string, std::string> rows[] = {
      {framed(reply(2)), kBadData},
      {framed(""), "IOException 1 read 0 bytes from IPC"},
      {framed("garbled"), "IOException 1 ber_scanf failure (received garbled message?)"},
      {framed(hex("3003020105")), "IOException 1 ber_scanf failure (received garbled message?)"},
      {hex("ffffff"), kBroken},
      {hex("0000001030"), kBroken},
  };
  for (const auto& [frame, failure] : rows) {
    for (int attempt = 0; attempt < 2; ++attempt)
      peer().accept().expect(ping).sendRaw(frame).endStream().expectClosed();
    EXPECT_EQ(pingThrows().substr(0, failure.size()), failure);
    EXPECT_EQ(session().socket(), -1);
    EXPECT_TRUE(peer().finished());
  }
}

TEST_F(SessionCoreTest, RequestsSentOnceAreNotRepeated) {
  exchange();
  peer().expect(request(1)).hangUp();
  EXPECT_EQ(stopThrows().substr(0, kBroken.size()), kBroken);
  EXPECT_EQ(session().socket(), -1);
  ASSERT_TRUE(peer().finished());

  // Repeatable requests use a second connection, and the first is closed.
  peer().accept().expect(ping).send("x").expectClosed().accept().expect(ping).send(pong);
  session().ping();
  EXPECT_TRUE(hasLogged("Retried brondalt request succeeds"));

  // Complete replies keep the connection.
  peer().expect(request(1)).send(reply(2)).expect(request(1)).send("x").expect(request(1)).send("");
  EXPECT_EQ(stopThrows(), kBadData);
  EXPECT_NE(stopThrows().find("garbled"), std::string::npos);
  EXPECT_NE(stopThrows().find("read 0 bytes"), std::string::npos);
  exchange();
}

// The rest of the reply may still arrive; it must not be taken for the next reply.
TEST_F(SessionCoreTest, AfterAReplyThatIsTooLongTheConnectionIsReplaced) {
  configure("lrpc.message.maxsize: 2\n");
  const std::string tooLong = "IOException 12 read 2097153 bytes from IPC: Cannot allocate memory";
  peer().expect(request(1)).sendRaw(hex("01002000"));
  EXPECT_EQ(stopThrows(), tooLong);
  const std::string longest(2 << 20, '\0');
  peer().expectClosed().accept().expect(request(1)).send(pong + longest.substr(pong.size()));
  EXPECT_EQ(stopThrows(), "nothing");
  configure("lrpc.message.maxsize: -1\n");
  peer().expect(request(1)).send(pong + longest.substr(pong.size() + (1 << 20)));
  EXPECT_EQ(stopThrows(), "nothing") << "a megabyte is always taken";
}

TEST_F(SessionCoreTest, ALateReplyIsNotTakenForTheNextOne) {
  configure("lrpc.timeout: 0\n");
  for (int attempt = 0; attempt < 2; ++attempt) peer().accept().expect(ping);
  EXPECT_EQ(pingThrows(), "TimeoutException 0 RecvWait out");
  EXPECT_EQ(session().socket(), -1);

  peer().accept().expect(request(1));
  EXPECT_EQ(stopThrows(), "TimeoutException 0 RecvWait out");
  EXPECT_NE(session().socket(), -1);
  EXPECT_TRUE(peer().send(pong).finished());
  configure("lrpc.timeout: 60\n");
  peer().expectClosed().accept().expect(request(1)).send(reply(2));
  EXPECT_EQ(stopThrows(), kBadData);
}

// The thread is cancelled, and reaches a cancellation point before or after its exchange.
TEST_F(SessionCoreTest, ACancelledThreadClosesItsConnectionAndUnwinds) {
  static bool early;
  for (const bool row : {true, false}) {
    early = row;
    peer().accept();
    if (!early) peer().expect(ping).send(pong);
    peer().expectClosed();
    const auto work = [](void* socketPath) -> void* {
      LocalRpcSession session(*static_cast<std::string*>(socketPath), true, false);
      if (early) pthread_cancel(pthread_self());
      session.ping();
      pthread_cancel(pthread_self());
      return nullptr;
    };
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, nullptr, work, &path), 0);
    void* end = nullptr;
    ASSERT_EQ(pthread_join(thread, &end), 0);
    EXPECT_EQ(end == PTHREAD_CANCELED, early);
    EXPECT_TRUE(peer().finished());
  }
}

TEST_F(SessionCoreTest, EachNewConnectionIsAuthenticatedBeforeItIsUsed) {
  const std::string authenticate = request(15);
  startSession(true);
  peer().expect(authenticate).send(answer(0)).expect(ping).send(pong).expect(ping).hangUp();
  peer().accept().expect(authenticate).hangUp();  // is retried like any other
  peer().accept().expect(authenticate).send(answer(0)).expect(ping).send(pong);
  session().ping();
  session().ping();
  session().authenticateProcess();  // already done
  session().lostConnection();
  EXPECT_FALSE(session().processAuthenticated());
  EXPECT_TRUE(peer().finished());

  peer().accept().expect(authenticate).send(answer(20));
  EXPECT_EQ(pingThrows(), "SystemException 0 client failed to provide correct credentials");
  EXPECT_TRUE(hasLogged("process authentication request failed: client failed to"));
  EXPECT_FALSE(session().processAuthenticated());
  EXPECT_TRUE(peer().finished());
  exchange();  // on the same connection, which stays open

  session().dropConnection();
  peer().accept().expect(authenticate).sendRaw(framed(answer(0)) + framed(pong)).expectClosed();
  EXPECT_EQ(pingThrows(), kBroken + " 0 brondalt sent more than was asked for");
}

TEST_F(SessionCoreTest, AShortStatusBlockIsReadAsFarAsItGoes) {
  const std::string fields[] = {integer(2),  integer(10), integer(-5), octets("no such"),
                                integer(17), integer(6),  integer(7),  octets("tired")};
  for (int count = 8; count >= 0; --count) {
    std::string body;
    for (int i = 0; i < count; ++i) body += fields[i];
    if (count < 8) body += fields[count].substr(0, fields[count].size() - 1);  // the next is truncated
    SCOPED_TRACE(count);
    peer().expect(ping).send(reply(0, body));
    IPCRequest request(IPC_OP_PING);
    IPCReply answer;
    session().lrpc(request, answer);
    EXPECT_EQ(session().updateVRErrInfo(answer), count > 0 ? 2 : 11);
    EXPECT_EQ(session().statusCode(), count > 1 ? 10 : 0);
    EXPECT_EQ(session().statusDetail(), count > 2 ? -5 : 0);
    EXPECT_EQ(session().statusMessage(), count > 3 ? "no such" : "");
    EXPECT_EQ(session().healthResult(), count > 4 ? 17 : 11);
    EXPECT_EQ(session().healthValue1(), count > 5 ? 6 : 0);
    EXPECT_EQ(session().healthValue2(), count > 6 ? 7 : 0);
    EXPECT_EQ(session().healthMessage(), count > 7 ? "tired" : "");
  }
}

TEST_F(SessionCoreTest, ResultsAndFilesHaveTheirTexts) {
  EXPECT_EQ(session().healthResult(), 48);
  EXPECT_EQ(LocalRpcSession::errorString(VR_SUCCESS), "Success");
  EXPECT_EQ(LocalRpcSession::errorString(VR_NAME_BLOCKED), "Name blocked in configuration file");
  EXPECT_EQ(LocalRpcSession::errorString(static_cast<ValidationResult>(-1)), "unexpected error");
  EXPECT_EQ(LocalRpcSession::errorString(static_cast<ValidationResult>(48)), "unexpected error");

  const std::string bytes("a\0b", 3);
  put(in("file"), bytes);
  EXPECT_EQ(readFile(in("file")), bytes);
  EXPECT_EQ(thrownBy([&] { readFile(in("none")); }),
            "SystemException -1 OS call failed: No such file or directory");
  EXPECT_EQ(thrownBy([&] { readFile(m_dir); }), "SystemException -1 OS call failed: Is a directory");
}

}  // namespace
