#include <future>

#include "lrpc/client/client_call.h"
#include "tests/support/prelude.h"
#include "tests/support/scripted_peer.h"
#include "tests/support/standin_process.h"
#include "tests/support/wire.h"
#include "tests/support/world_test.h"

namespace {

using namespace vesk;
using namespace testsupport;
using std::chrono::milliseconds;

constexpr milliseconds kLong(60'000);  // never passes in a test
constexpr milliseconds kShort(150);    // passes while a peer stalls

std::string lookup(DSObjectType type, const std::string& name) {
  return request(IPC_OP_GET_OBJECT, integer(type) + integer(AllObjects) + integer(KeyName) + integer(0) +
                                        integer(0) + octets(name));
}

std::string nextEntry() {
  return request(IPC_OP_GET_OBJECT2, integer(DSUser) + integer(AllObjects) + integer(KeyName) + integer(0) +
                                         integer(0) + octets(NEXT_ENTRY));
}

const std::string kFound = answer(VR_SUCCESS, object("CN=a"));
const std::string kMissing = answer(VR_NOT_FOUND);

// Outcome, result and step in one line.
std::string shown(const CallStatus& status) {
  return std::string(textOf(status.outcome)) + " | " + std::to_string(status.result) + " | " +
         textOf(status.step);
}

class ClientTest : public WorldTest {
 protected:
  void SetUp() override {
    WorldTest::SetUp();
    if (IsSkipped()) return;
    options.socketPath = in("daemon");
    options.trustedPeer = geteuid();
    options.deadline = kLong;
  }
  void TearDown() override {
    m_client.reset();
    m_peer.reset();
    WorldTest::TearDown();
  }

  Client& client() {
    if (!m_client) m_client.emplace(options);
    return *m_client;
  }
  ScriptedPeer& peer() {
    if (!m_peer) m_peer.emplace(options.socketPath);
    return *m_peer;
  }
  std::string user(const CallOptions& call = {}) { return shown(client().user("a", 0, call).status()); }

  ClientOptions options;

 private:
  std::optional<ScriptedPeer> m_peer;
  std::optional<Client> m_client;
};

TEST_F(ClientTest, EveryReplyHasItsOutcome) {
  const struct {
    std::string reply;
    const char* status;
  } rows[] = {
      {kFound, "success | 0 | reading the reply"},
      {answer(VR_SUCCESS, octets("")), "not found | 0 | reading the reply"},
      {kMissing, "not found | 17 | reading the reply"},
      {answer(VR_SERVER_UNREACHABLE), "the daemon cannot answer now | 16 | reading the reply"},
      {answer(VR_PROCESS_AUTH_FAILED), "refused | 20 | reading the reply"},
      {answer(VR_NO_REPLY_YET), "the daemon cannot answer now | 13 | reading the reply"},
      {answer(VR_SUCCESS), "the reply cannot be read | 48 | reading the reply"},
      {answer(VR_SUCCESS, octets("no blob")), "the reply cannot be read | 48 | reading the reply"},
      {reply(IPC_SUCCESS), "the reply cannot be read | 48 | reading the reply"},
  };
  for (const auto& row : rows) {
    peer().accept().expect(lookup(DSUser, "a")).send(row.reply);
    EXPECT_EQ(user(), row.status);
    client().closeIdle();
  }
  EXPECT_TRUE(peer().finished());
}

TEST_F(ClientTest, ALostReplyIsAskedForOnceMore) {
  peer().expect(lookup(DSUser, "a")).hangUp().expect(lookup(DSUser, "a")).send(kFound);
  EXPECT_EQ(user(), "success | 0 | reading the reply");
  peer().expect(lookup(DSUser, "a")).hangUp().expect(lookup(DSUser, "a")).hangUp();
  EXPECT_EQ(user(), "the daemon cannot be reached | 48 | waiting for the reply");
  EXPECT_TRUE(peer().finished());
}

TEST_F(ClientTest, ARefusalOfTheProtocolIsRefused) {
  for (int i = 0; i < 2; ++i) peer().accept().expect(lookup(DSUser, "a")).send(reply(IPC_NOT_AUTHORIZED));
  EXPECT_EQ(user(), "refused | 48 | reading the reply");
  EXPECT_TRUE(peer().finished());
}

TEST_F(ClientTest, NothingIsSentToAnUntrustedPeer) {
  options.trustedPeer = geteuid() + 1;
  peer().accept().expectClosed();
  EXPECT_EQ(user(), "the process at the socket is not trusted | 48 | connecting");
  EXPECT_TRUE(peer().finished());
}

TEST_F(ClientTest, AProcessThatMustNotAskItselfDoesNot) {
  options.refuseOwnProcess = true;
  peer().accept().expectClosed();
  EXPECT_EQ(user(), "the daemon cannot be reached | 48 | connecting");
  EXPECT_TRUE(peer().finished());
}

TEST_F(ClientTest, AChangeWithoutAnAnswerIsUnknownAndSentOnce) {
  const std::string change =
      request(IPC_OP_CHANGE_PASSWORD, octets("a") + octets("old") + octets("new") + integer(0));
  peer().expect(change).hangUp();
  EXPECT_EQ(shown(client().changePassword("a", Shredder("old"), Shredder("new"))),
            "the outcome is unknown: the change may have been made | 48 | waiting for the reply");
  peer().accept().expect(change).send(answer(VR_PASSWORD_POLICY, ""));
  CallOptions call;
  call.evenIfAway = true;
  EXPECT_EQ(shown(client().changePassword("a", Shredder("old"), Shredder("new"), call)),
            "refused | 5 | reading the reply");
  EXPECT_TRUE(peer().finished());
}

TEST_F(ClientTest, AFailedProofOfTheProcessIsNoPartOfTheNextRequest) {
  options.authenticateProcess = true;
  for (int i = 0; i < 2; ++i) peer().accept().expect(request(IPC_OP_AUTH_REQUEST)).send("damaged");
  EXPECT_EQ(user(), "the reply cannot be read | 48 | having this process checked");
  peer().accept().expect(request(IPC_OP_AUTH_REQUEST)).send(answer(VR_PROCESS_AUTH_FAILED));
  peer().expect(request(IPC_OP_USER_LOGIN, octets("a"))).hangUp().down();
  const auto status = client().call("login", Client::Repeat::Never, [](LocalRpcSession& session) {
    EXPECT_THROW(session.userLogin("a"), VESKException);
    session.userLogin("a");
  });
  EXPECT_EQ(shown(status),
            "the outcome is unknown: the change may have been made | 48 | waiting for the reply");
  EXPECT_TRUE(peer().finished());
}

TEST_F(ClientTest, ACallThatIsOverSendsNothing) {
  Cancellation cancellation;
  cancellation.cancel();
  CallOptions cancelled;
  cancelled.cancellation = &cancellation;
  CallOptions late;
  late.deadline = milliseconds(0);
  peer().accept().expectClosed().accept().expectClosed();
  EXPECT_EQ(shown(client().changePassword("a", Shredder("old"), Shredder("new"), cancelled)),
            "cancelled | 48 | sending the request");
  EXPECT_EQ(shown(client().authenticate("a", Shredder("secret"), late)),
            "the deadline has passed | 48 | sending the request");
  EXPECT_TRUE(peer().finished());
}

TEST_F(ClientTest, ALoginIsSentOnceOnANewConnection) {
  const std::string login = request(IPC_OP_VALIDATE_PLAINTEXT, octets("a") + octets("secret") + integer(0));
  peer().expect(request(IPC_OP_PING)).send(reply(IPC_SUCCESS));
  EXPECT_TRUE(client().ping().ok());
  peer().accept().expect(login).hangUp();
  EXPECT_EQ(shown(client().authenticate("a", Shredder("secret"))),
            "the daemon cannot be reached | 48 | waiting for the reply");
  EXPECT_TRUE(peer().finished());
}

TEST_F(ClientTest, AStatusSaysAllThatTheDaemonSaid) {
  peer()
      .expect(lookup(DSUser, "a"))
      .send(reply(IPC_SUCCESS, status(VR_ACCOUNT_LOCKED, 0, 0x234, "try later")));
  const CallStatus status = client().user("a").status();
  EXPECT_EQ(status.ntStatus, 0x234);
  EXPECT_EQ(status.describe(), "user: refused (reading the reply): Account locked: try later");
  EXPECT_EQ(status.answer().authenticate, LoginAnswer::MaxTries);
  try {
    status.throwIfFailed();
    FAIL();
  } catch (const CallException& error) {
    EXPECT_EQ(error.what(), status.describe());
    EXPECT_EQ(error.status().result, VR_ACCOUNT_LOCKED);
  }
}

TEST_F(ClientTest, NamesThatCannotBeAskedForAreNotFound) {
  for (const ObjectKey& key : {ObjectKey(""), ObjectKey(NEXT_ENTRY), ObjectKey(SID())})
    EXPECT_EQ(client().user(key).status().describe(), "user: not found");
}

TEST_F(ClientTest, TheDeadlineCoversEveryPieceOfTheReply) {
  CallOptions call;
  call.deadline = kShort;
  peer().expect(lookup(DSUser, "a"));
  EXPECT_EQ(user(call), "the deadline has passed | 48 | waiting for the reply");
  // A limit for each byte would let this reply come to its end.
  peer().accept().expect(lookup(DSUser, "a"));
  for (const char byte : framed(kFound))
    peer().sendRaw(std::string(1, byte)).then([] { std::this_thread::sleep_for(kShort / 10); });
  EXPECT_EQ(user(call), "the deadline has passed | 48 | waiting for the reply");
}

TEST_F(ClientTest, IdleConnectionsAreClosedByTheNextCall) {
  options.idle = milliseconds(0);
  for (int i = 0; i < 2; ++i) {
    peer().accept().expect(lookup(DSUser, "a")).send(kFound);
    EXPECT_EQ(user(), "success | 0 | reading the reply");
  }
  EXPECT_TRUE(peer().finished());
}

TEST_F(ClientTest, TheLongestTimesAreEver) {
  options.deadline = options.idle = options.cache.found = milliseconds::max();
  options.cache.entries = 1;
  peer().expect(lookup(DSUser, "a")).send(kFound);
  for (int i = 0; i < 2; ++i) EXPECT_EQ(user(), "success | 0 | reading the reply");
  EXPECT_TRUE(peer().finished());
}

TEST_F(ClientTest, ANegativeTimeIsOver) {
  options.deadline = milliseconds(-10'000'000'000'000);  // more nanoseconds than their type holds
  options.idle = milliseconds::min();
  peer().accept().expectClosed();
  EXPECT_EQ(user(), "the deadline has passed | 48 | sending the request");
  EXPECT_TRUE(peer().finished());
}

TEST_F(ClientTest, AnotherThreadEndsACall) {
  Cancellation cancellation;
  CallOptions call;
  call.cancellation = &cancellation;
  peer().expect(lookup(DSUser, "a")).then([&] { cancellation.cancel(); });
  EXPECT_EQ(user(call), "cancelled | 48 | waiting for the reply");
  EXPECT_EQ(user(call).substr(0, 9), "cancelled") << "a later call is cancelled too";
}

TEST_F(ClientTest, ACallWaitsForASessionNoLongerThanItsDeadline) {
  options.sessions = 1;
  std::promise<void> asked;
  std::promise<void> go;
  peer().expect(lookup(DSUser, "a")).then([&] {
    asked.set_value();
    go.get_future().wait();
  });
  peer().send(kFound).expect(request(IPC_OP_PING)).send(reply(IPC_SUCCESS));
  std::future<std::string> first = std::async(std::launch::async, [&] { return user(); });
  asked.get_future().wait();
  CallOptions call;
  call.deadline = kShort;
  EXPECT_EQ(shown(client().ping(call)), "the deadline has passed | 48 | waiting for a session");
  std::future<CallStatus> second = std::async(std::launch::async, [&] { return client().ping(); });
  go.set_value();
  EXPECT_EQ(first.get(), "success | 0 | reading the reply");
  EXPECT_TRUE(second.get().ok()) << "it gets the session that the first call gives back";
  EXPECT_TRUE(peer().finished());
}

TEST_F(ClientTest, WhileTheBreakerIsOpenOnlyCallsThatInsistAsk) {
  options.sessions = 1;
  ClientCore core(options);
  core.breaker.failed(*core.breaker.admit(), Breaker::Clock::now() + std::chrono::hours(1));
  CallOptions insisting;
  insisting.evenIfAway = true;
  const auto pings = [&](const CallOptions& call) {
    return shown(ClientCall(core, {"ping"}, call).run([](LocalRpcSession& session) { session.ping(); }));
  };
  EXPECT_EQ(pings(insisting), "the daemon cannot be reached | 48 | connecting");
  peer().expect(request(IPC_OP_PING)).send(reply(IPC_SUCCESS));
  EXPECT_EQ(pings({}), "the daemon cannot be reached | 48 | nothing, as the daemon failed a moment ago");
  SessionPool::Lease held = core.pool.tryBorrow();
  CallOptions brief = insisting;
  brief.deadline = kShort;
  EXPECT_EQ(pings(brief), "the deadline has passed | 48 | waiting for a session");
  held.release();
  EXPECT_EQ(pings(insisting), "success | 48 | reading the reply");
  peer().expect(request(IPC_OP_PING)).send(reply(IPC_SUCCESS));
  EXPECT_EQ(pings({}), "success | 48 | reading the reply") << "a success closes the breaker";
  EXPECT_TRUE(peer().finished());
}

TEST_F(ClientTest, AConnectionThatIsRefusedOpensTheBreaker) {
  ClientCore core(options);
  const auto later = Breaker::Clock::now() + std::chrono::hours(1);
  EXPECT_EQ(ClientCall(core, {"ping"}, {}).run([](LocalRpcSession& session) { session.ping(); }).outcome,
            CallOutcome::DaemonAway);
  EXPECT_TRUE(core.breaker.isOpen(Breaker::Clock::now() - std::chrono::hours(1)));
  EXPECT_FALSE(core.breaker.isOpen(later));
}

TEST_F(ClientTest, AListingThatIsLeftEarlyIsClosed) {
  const std::string start = request(IPC_OP_START_LIST, integer(DSUser) + integer(0) + integer(0));
  const std::string end = request(IPC_OP_END_LIST, integer(DSUser) + integer(0));
  peer()
      .expect(start)
      .send(answer(VR_SUCCESS))
      .expect(nextEntry())
      .send(kFound)
      .expect(end)
      .send(answer(VR_SUCCESS));
  {
    UserRange users = client().users();
    ASSERT_TRUE(users.next());
    EXPECT_EQ(users.count(), 1U);
  }
  EXPECT_TRUE(peer().finished());
}

TEST_F(ClientTest, AListingThatBreaksOffIsNoSuccess) {
  const std::string start = request(IPC_OP_START_LIST, integer(DSUser) + integer(0) + integer(0));
  const std::string end = reply(IPC_SUCCESS, status(VR_NOT_FOUND, END_OF_LIST));
  const struct {
    const char* name;
    std::function<void()> last;
    const char* status;
  } rows[] = {
      {"end", [&] { peer().expect(nextEntry()).send(end); }, "success"},
      {"lost", [&] { peer().hangUp(); }, "the daemon cannot be reached"},
      {"lost reply", [&] { peer().expect(nextEntry()).hangUp(); }, "the daemon cannot be reached"},
      {"not found", [&] { peer().expect(nextEntry()).send(kMissing); }, "the daemon cannot answer now"},
      {"nothing", [&] { peer().expect(nextEntry()).send(answer(VR_SUCCESS, octets(""))); },
       "the reply cannot be read"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Client own(options);
    peer().accept().expect(start).send(answer(VR_SUCCESS)).expect(nextEntry()).send(kFound);
    row.last();
    UserRange users = own.users();
    ASSERT_TRUE(users.next());
    EXPECT_FALSE(users.next());
    EXPECT_STREQ(textOf(users.status().outcome), row.status);
    EXPECT_FALSE(users.next());
    EXPECT_EQ(users.count(), 1U);
  }
  Client away(options);
  peer().down();
  EXPECT_THROW(for (const User& user : away.users()) static_cast<void>(user), CallException);
}

TEST_F(ClientTest, KeptAnswersAreNotAskedForAgain) {
  options.cache.entries = 2;
  peer().expect(lookup(DSUser, "a")).send(kFound).expect(lookup(DSUser, "b")).send(kMissing);
  for (int i = 0; i < 2; ++i) {
    EXPECT_TRUE(client().user("a"));
    EXPECT_EQ(shown(client().user("b").status()), "not found | 17 | reading the reply");
  }
  ADObject first = client().user("a")->getObject();
  first["cn"] = "changed";
  EXPECT_FALSE(client().user("a")->getObject().attributeExists("cn", true))
      << "each caller has an object of its own";
  // A third answer takes the place of the one that was not asked for longest.
  peer().expect(lookup(DSGroup, "a")).send(kMissing).expect(lookup(DSUser, "b")).send(kFound);
  EXPECT_FALSE(client().group("a"));
  EXPECT_TRUE(client().user("a"));
  EXPECT_TRUE(client().user("b"));
  EXPECT_TRUE(peer().finished());
}

TEST_F(ClientTest, AnswersAreForgottenInTimeAndOnFlush) {
  options.cache.entries = 10;
  options.cache.notFound = milliseconds(0);
  peer().expect(lookup(DSUser, "b")).send(kMissing).expect(lookup(DSUser, "b")).send(kFound);
  EXPECT_FALSE(client().user("b"));
  EXPECT_TRUE(client().user("b"));
  const std::string flush = request(IPC_OP_FLUSH_CACHE, octets("") + integer(FLUSH_OBJ_CACHE) + octets("b"));
  const auto askMeanwhile = [&] {
    unlink(options.socketPath.c_str());
    ScriptedPeer other(options.socketPath);
    other.expect(lookup(DSUser, "c")).send(kFound);
    EXPECT_TRUE(client().user("c"));
  };
  peer().expect(flush).then(askMeanwhile).send(answer(VR_SUCCESS));
  for (const char* name : {"b", "c"}) peer().expect(lookup(DSUser, name)).send(kMissing);
  EXPECT_TRUE(client().flush("b").ok());
  EXPECT_FALSE(client().user("b"));
  EXPECT_FALSE(client().user("c"));
  EXPECT_TRUE(peer().finished());
}

TEST_F(ClientTest, AnAnswerFromBeforeAFlushIsNotKept) {
  options.cache.entries = 10;
  ReplyCache cache(options.cache);
  const ReplyCache::Ticket ticket = cache.ticket();
  cache.clear();
  cache.keep(ticket, "key", nullptr);
  EXPECT_FALSE(cache.find("key"));
  cache.keep(cache.ticket(), "key", nullptr);
  EXPECT_TRUE(cache.find("key"));
}

TEST_F(ClientTest, AnAnswerThatIsTooLargeIsNotKept) {
  options.cache.entries = 10;
  options.cache.bytes = 100;
  for (int i = 0; i < 2; ++i) {
    peer().expect(lookup(DSUser, "a")).send(kFound);
    EXPECT_TRUE(client().user("a"));
  }
  EXPECT_TRUE(peer().finished());
}

TEST_F(ClientTest, ManyObjectsComeInTheOrderOfTheirKeys) {
  StandinProcess standin;
  options.socketPath = standin.socket();
  options.sessions = 3;
  std::vector<ObjectKey> keys;
  for (int i = 0; i < 20; ++i) keys.insert(keys.end(), {"lquispe", "nosuchuser", uint32_t{10060}, "mgruber"});
  size_t reported = 0;
  CallOptions call;
  call.progress = [&](size_t done, size_t all) {
    EXPECT_EQ(++reported, done);
    EXPECT_EQ(all, keys.size());
  };
  // A daemon that loses requests makes some calls fail, and none come out wrong.
  size_t failed = 0;
  for (const bool isFaulty : {false, true}) {
    if (isFaulty) standin.restart({"--fault", "drop%4", "--fault", "garbage%7"});
    reported = 0;
    const auto users = client().users(keys, 0, call);
    ASSERT_EQ(users.size(), keys.size());
    EXPECT_EQ(reported, keys.size());
    for (size_t i = 0; i < users.size(); ++i) {
      SCOPED_TRACE(users[i].status().describe());
      const CallOutcome outcome = users[i].status().outcome;
      if (isFaulty && (outcome == CallOutcome::DaemonAway || outcome == CallOutcome::MalformedReply))
        ++failed;
      else if (i % 4 == 1)
        EXPECT_EQ(outcome, CallOutcome::NotFound);
      else
        EXPECT_EQ(users[i].value().unixName(), i % 4 == 3 ? "mgruber" : "lquispe");
    }
  }
  EXPECT_LT(failed, keys.size() / 2) << "each has a second attempt";
}

TEST_F(ClientTest, AChildUsesTheClientAsItsOwn) {
  const StandinProcess standin;
  options.socketPath = standin.socket();
  options.sessions = 1;
  UserRange users = client().users();
  ASSERT_TRUE(users.next());
  const pid_t child = fork();
  if (child == 0) {
    const bool works = client().user("lquispe") && !users.next() && !users.status().ok();
    _exit(works ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  while (users.next()) continue;
  EXPECT_TRUE(users.status().ok()) << users.status().describe();
  EXPECT_GT(users.count(), 20U);
}

TEST_F(ClientTest, ThreadsShareTheSessionsThatThereAre) {
  const StandinProcess standin({"--fault", "drop%10"});
  options.socketPath = standin.socket();
  Client& shared = client();
  const long before = openDescriptors();
  std::atomic<int> wrong{0};
  std::atomic<int> right{0};
  const auto judge = [&](const CallStatus& status, CallOutcome expected) {
    if (status.outcome == expected)
      ++right;
    else if (status.outcome != CallOutcome::DaemonAway)  // both attempts were dropped
      ++wrong;
  };
  std::vector<std::thread> threads;
  for (int i = 0; i < 32; ++i)
    threads.emplace_back([&] {
      for (int k = 0; k < 20; ++k) {
        judge(shared.user("nosuchuser").status(), CallOutcome::NotFound);
        judge(shared.user("mgruber").status(), CallOutcome::Success);
      }
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_LE(openDescriptors() - before, 8);
  EXPECT_EQ(wrong, 0);
  EXPECT_GT(right, 1280 - 100) << "a tenth of the requests is dropped, and each call has two";
}

}  // namespace
