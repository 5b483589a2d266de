// The session's core: the exchange, the care of the connection, the retry, and the status block.

#include <fokrazo/session.h>

#include <fcntl.h>
#include <pthread.h>
#include <sys/socket.h>
#include <unistd.h>

#include <ctime>

#include <fokrazo/ipcmessage.h>
#include "tests/support/session_test.h"
#include "util/file/unique_fd.h"

using namespace vesk;
using namespace testsupport;

// Linked in the place of time (-Wl,--wrap): the day's clock stands still but for its offset.
extern "C" time_t __wrap_time(time_t* /*now*/) {
  return 1000000000;
}

namespace {

const std::string kBroken = "ConnectionBrokenException";
const std::string kBadData = "SystemException 2 Unsuccesful IPC execute: bad data";

class SessionCoreTest : public SessionTest {
 protected:
  // A ping that is answered.
  void exchange() {
    peer().expect(ping).send(pong);
    session().ping();
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

TEST_F(SessionCoreTest, ConnectsWithTheFirstRequestOrAtOnce) {
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
  const struct {
    const char* timeout;
    long idle;
    bool kept;
  } rows[] = {{"", 30, true}, {"", 31, false}, {"abc", 0, true}, {"abc", 1, false}, {"7m", 7, true}};
  for (const auto& row : rows) {
    configure("lrpc.timeout: 1\nlrpc.session.timeout: " + std::string(row.timeout) + "\n");
    session().dropConnection();
    peer().accept();
    exchange();
    forgetLog();
    dayclock::offset += row.idle;
    if (!row.kept) peer().expectClosed().accept();
    exchange();
    EXPECT_EQ(hasLogged("dropping old lrpc connection"), !row.kept) << row.timeout << " " << row.idle;
    EXPECT_TRUE(peer().finished());
  }
  // It is idle from the end of its exchange.
  peer().expect(ping).then([] { dayclock::offset += 8; }).send(pong);
  session().ping();
  dayclock::offset += 5;
  exchange();
  EXPECT_TRUE(peer().finished());
}

TEST_F(SessionCoreTest, AChildOfForkTakesAConnectionOfItsOwn) {
  exchange();
  const int socket = session().socket();
  // The child finds nobody: its request must not go to the parent's connection.
  const std::string elsewhere = path + ".away";
  ASSERT_EQ(rename(path.c_str(), elsewhere.c_str()), 0);
  checkInChild([this] {
    EXPECT_NE(pingThrows().find("ipc socket connect"), std::string::npos);
    EXPECT_EQ(session().socket(), -1);
  });
  ASSERT_EQ(rename(elsewhere.c_str(), path.c_str()), 0);
  EXPECT_TRUE(hasLogged("process forked, closing parent's connection"));
  exchange();
  EXPECT_EQ(session().socket(), socket);
  EXPECT_TRUE(peer().finished());
}

TEST_F(SessionCoreTest, ADescriptorThatTheProgramHasReusedIsLeftAlone) {
  const UniqueFd file(open(in("file").c_str(), O_RDWR | O_CREAT, 0600));
  const UniqueFd other(::socket(AF_UNIX, SOCK_STREAM, 0));
  const struct {
    int theirs;  // what takes the number; -1 leaves it closed
    long idle;
    const char* reason;
  } rows[] = {{file.get(), 0, "lrpc connection reopened "},
              {other.get(), 0, "lrpc connection reopened "},
              {file.get(), 60, "dropping old lrpc connection"},
              {-1, 0, "lrpc connection reopened 0 != "}};
  for (const auto& row : rows) {
    peer().accept();
    exchange();
    const int number = session().socket();
    close(number);
    const UniqueFd reused(row.theirs >= 0 ? dup2(row.theirs, number) : -1);
    dayclock::offset += row.idle;
    peer().accept();
    exchange();
    EXPECT_TRUE(hasLogged(row.reason)) << row.reason;
    session().dropConnection();
    EXPECT_EQ(fcntl(number, F_GETFD), reused ? 0 : -1);
    EXPECT_TRUE(peer().finished());
  }
  EXPECT_EQ(std::filesystem::file_size(in("file")), 0u);
}

TEST_F(SessionCoreTest, TheSecondFailureIsTheCallers) {
  const struct {
    std::string frame, failure;
  } rows[] = {
      {framed(reply(2)), kBadData},
      {framed(""), "IOException 1 read 0 bytes from IPC"},
      {framed("garbled"), "IOException 1 ber_scanf failure (received garbled message?)"},
      {framed(hex("3003020105")), "IOException 1 ber_scanf failure (received garbled message?)"},
      {hex("ffffff"), kBroken},
      {hex("0000001030"), kBroken},
  };
  for (const auto& row : rows) {
    for (int attempt = 0; attempt < 2; ++attempt) peer().accept().expect(ping).sendRaw(row.frame).endStream();
    peer().expectClosed();
    EXPECT_EQ(pingThrows().substr(0, row.failure.size()), row.failure);
    EXPECT_EQ(session().socket(), -1);
    EXPECT_TRUE(peer().finished());
  }
}

TEST_F(SessionCoreTest, WhatIsSentOnceIsNotSentAgain) {
  exchange();
  ASSERT_TRUE(peer().restart().finished());  // the connection is lost before the next request
  EXPECT_EQ(stopThrows().substr(0, kBroken.size()), kBroken);
  EXPECT_EQ(session().socket(), -1);
  exchange();
  ASSERT_TRUE(peer().restart().finished());
  exchange();
  EXPECT_TRUE(hasLogged("Retried brondalt request succeeds"));

  // Whole replies leave the connection as it is.
  peer().expect(request(1)).send(reply(2)).expect(request(1)).send("x");
  EXPECT_EQ(stopThrows(), kBadData);
  EXPECT_NE(stopThrows().find("garbled"), std::string::npos);
  exchange();
  EXPECT_TRUE(peer().finished());
}

TEST_F(SessionCoreTest, ALateReplyIsNoAnswerToTheNextRequest) {
  configure("lrpc.timeout: 0\n");
  for (int attempt = 0; attempt < 2; ++attempt) peer().accept().expect(ping).stall();
  EXPECT_EQ(pingThrows(), "TimeoutException 0 RecvWait out");
  EXPECT_EQ(session().socket(), -1);

  peer().accept().expect(request(1)).stall();
  EXPECT_EQ(stopThrows(), "TimeoutException 0 RecvWait out");
  EXPECT_NE(session().socket(), -1);
  EXPECT_TRUE(peer().send(pong).finished());
  configure("lrpc.timeout: 1\n");
  peer().accept().expect(request(1)).send(reply(2));
  EXPECT_EQ(stopThrows(), kBadData);
  EXPECT_TRUE(peer().finished());
}

// The thread is cancelled, and comes to a place where that counts, before or behind its exchange.
TEST_F(SessionCoreTest, AThreadThatIsCancelledClosesItsConnectionAndUnwinds) {
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
  const std::string authenticate = hex("30 84 00000006 02010f 020100");
  startSession(true);
  peer().expect(authenticate).send(answer(0)).expect(ping).send(pong).expect(ping).hangUp();
  peer().accept().expect(authenticate).hangUp();  // may be tried again like any other
  peer().accept().expect(authenticate).send(answer(0)).expect(ping).send(pong);
  session().ping();
  session().ping();
  session().authenticateProcess();  // is already
  session().lostConnection();
  EXPECT_FALSE(session().processAuthenticated());
  EXPECT_TRUE(peer().finished());

  peer().accept().expect(authenticate).send(answer(20));
  EXPECT_EQ(pingThrows(), "SystemException 0 client failed to provide correct credentials");
  EXPECT_TRUE(hasLogged("process authentication request failed: client failed to"));
  EXPECT_FALSE(session().processAuthenticated());
  EXPECT_TRUE(peer().finished());
}

TEST_F(SessionCoreTest, AStatusBlockIsReadAsFarAsItGoes) {
  const std::string fields[] = {integer(2),  integer(10), integer(-5), octets("no such"),
                                integer(17), integer(6),  integer(7),  octets("tired")};
  for (int count = 8; count >= 0; --count) {
    std::string body;
    for (int i = 0; i < count; ++i) body += fields[i];
    if (count < 8) body += fields[count].substr(0, fields[count].size() - 1);  // the next is cut
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
  EXPECT_TRUE(peer().finished());
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
