// A server in its own thread, with a scripted back end and clients that record their bytes.

#include "daemon/server.h"

#include <future>
#include <optional>

#include "tests/support/standin_process.h"
#include "tests/support/wire.h"
#include "tests/support/wrapped.h"

namespace {

std::atomic<int> acceptCalls{0};
std::atomic<bool> noDescriptors{false};

}  // namespace

WRAPPED(int, accept4, (int fd, sockaddr* address, socklen_t* length, int flags), ++acceptCalls,
        noDescriptors ? (errno = EMFILE, -1) : __real_accept4(fd, address, length, flags))

namespace brondalt {
namespace {

using namespace testsupport;

constexpr int kPatienceMs = 100 * 1000;        // bounds hangs; no test depends on it
const std::string kPong = framed(request(0));  // the reply is the same bytes

Object objectOf(size_t size) {
  vesk::ADObject object("CN=x");
  object["description"].addVal(std::string(size, 'x'), false, false);
  return vesk::ADSerializer::serialize(object);
}

/// Always the same object, because it contains its creation time.
Object object() {
  static const Object made = objectOf(1);
  return made;
}

/// Answers a lookup as its name says, and counts and holds back what searches and listings are asked for.
class ScriptedBackend : public Backend {
 public:
  Health health() const override { return {vesk::VR_DISCONNECTED_MODE, 7, 8, "offline"}; }

  void find(const Caller&, const Selection&, const LookupKey& key, Done<Object> done) override {
    const std::string& name = std::get<std::string>(key);
    if (name == "throw") throw std::runtime_error("fault");
    if (name == "drop") return;
    if (name == "away") return done(Status::away("no server"));
    if (name == "twice") done(object());
    if (name == "later") return later.push_back(std::move(done));
    if (name == "large") return done(large);
    done(object());
  }
  void openSearch(const Caller&, const SearchQuery&, Done<std::unique_ptr<Search>> done) override {
    done(std::unique_ptr<Search>(std::make_unique<ScriptedSearch>(*this)));
  }
  void openListing(const Caller& caller, vesk::DSObjectType type,
                   Done<std::unique_ptr<Listing>> done) override {
    if (type != vesk::DSGroup) return Backend::openListing(caller, type, std::move(done));
    done(std::unique_ptr<Listing>(std::make_unique<LateListing>(*this)));
  }

  const Object large = objectOf(8 << 20);  // more than a socket buffers
  std::vector<Done<Object>> later;
  std::vector<Done<Objects>> laterPages;
  std::vector<size_t> limits;  // of the requested pages
  int cutShort = 0;            // searches destroyed before next() had returned

 private:
  /// Pages of one object. A page of 1 is empty, a page of 2 comes late.
  struct ScriptedSearch : Search {
    explicit ScriptedSearch(ScriptedBackend& backend) : m_backend(backend) {}
    ~ScriptedSearch() override { m_backend.cutShort += m_isRunning; }
    void next(size_t limit, Done<Objects> done) override {
      m_isRunning = true;
      m_backend.limits.push_back(limit);
      if (limit == 2)
        m_backend.laterPages.push_back(std::move(done));
      else
        done(limit == 1 ? Objects() : Objects(1, object()));
      m_isRunning = false;
    }
    ScriptedBackend& m_backend;
    bool m_isRunning = false;
  };
  struct LateListing : Listing {
    explicit LateListing(ScriptedBackend& backend) : m_backend(backend) {}
    void next(const Selection&, Done<Object> done) override { m_backend.later.push_back(std::move(done)); }
    ScriptedBackend& m_backend;
  };
};

/// Passes requests and replies, as set by the members.
class ScriptedTraffic : public Traffic {
 public:
  Admission admit() override { return {verdict, 0, delay}; }
  void deliver(Connection& connection, std::string_view message, int mark) override {
    if (onDeliver) onDeliver();
    Traffic::deliver(connection, message, mark);
  }

  Verdict verdict = Verdict::CarryOut;
  std::chrono::milliseconds delay{0};
  std::function<void()> onDeliver;
};

std::string lookup(const std::string& name) {
  return framed(request(11, integer(0) + integer(2) + integer(0) + integer(0) + integer(0) + octets(name)));
}

std::string openSearch(int pageSize) {
  return framed(request(
      22, octets("") + octets("") + octets("") + sequence("") + integer(2) + integer(pageSize) + integer(0)));
}

std::string page(int handle) {
  return framed(request(23, integer(handle)));
}

/// A reply of the scripted back end: status, health, and further fields.
std::string answered(int result, const std::string& message, const std::string& rest = "", int opcode = 11) {
  const std::string health = integer(19) + integer(7) + integer(8) + octets("offline");
  std::string bytes = request(opcode, integer(result) + integer(0) + integer(0) + octets(message) + health);
  return framed(bytes + rest);
}

/// A failure followed by an exception of the same text.
std::string thrown(int result, const std::string& message, int opcode) {
  return answered(result, message, integer(1) + octets(message), opcode);
}

const std::string kUnknownSearch = thrown(33, "No such paged search", 23);
const std::string kEmptyPage = answered(0, "", integer(0), 23);

std::string refused(int opcode, int result) {
  std::string bytes = request(opcode);
  bytes.back() = static_cast<char>(result);
  return framed(bytes);
}

class RawClient {
 public:
  explicit RawClient(const std::string& path) : m_fd(vesk::IPCconnect(path)) {}

  RawClient& send(const std::string& bytes) {
    EXPECT_EQ(::send(m_fd.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(bytes.size()));
    return *this;
  }
  /// `size` bytes, or those before the end of the stream.
  std::string receive(size_t size) {
    std::string bytes(size, '\0');
    size_t have = 0;
    for (pollfd polled = {m_fd.get(), POLLIN, 0}; have < size && poll(&polled, 1, kPatienceMs) > 0;) {
      const ssize_t count = recv(m_fd.get(), &bytes[have], size - have, 0);
      if (count <= 0) break;
      have += static_cast<size_t>(count);
    }
    bytes.resize(have);
    return bytes;
  }
  std::string ask(const std::string& bytes, const std::string& expected) {
    return send(bytes).receive(expected.size());
  }
  bool isEnded() {
    pollfd polled = {m_fd.get(), POLLIN, 0};
    char byte;
    return poll(&polled, 1, kPatienceMs) == 1 && recv(m_fd.get(), &byte, 1, 0) <= 0;
  }
  bool isQuiet() const {
    pollfd polled = {m_fd.get(), POLLIN, 0};
    return poll(&polled, 1, 0) == 0;
  }

 private:
  Descriptor m_fd;
};

class ServerTest : public testing::Test {
 protected:
  ~ServerTest() override {
    noDescriptors = false;
    if (!m_thread.joinable()) return;
    m_loop.post([this] { m_loop.stop(); });
    m_thread.join();
  }

  void start(const Limits& limits = {}) {
    m_server.emplace(m_loop, m_socket, m_service, m_traffic, limits,
                     [this](const std::string& line) { m_lastLine = line; });
    m_thread = std::thread([this] { m_loop.run(); });
  }
  void startImpatient() {
    Limits limits;
    limits.step = std::chrono::milliseconds(20);
    start(limits);
  }
  void onLoop(const std::function<void()>& task) {
    std::promise<void> done;
    m_loop.post([&] {
      task();
      done.set_value();
    });
    done.get_future().wait();
  }
  void awaitHeldBack(size_t count) {
    for (size_t held = 0; held < count;)
      onLoop([&] { held = m_backend.later.size() + m_backend.laterPages.size(); });
  }
  void answerLater() {
    onLoop([this] {
      for (const Done<Object>& done : m_backend.later) done(object());
      m_backend.later.clear();
    });
  }
  RawClient client() const { return RawClient(m_path); }

  ScratchDirectory m_scratch;
  const std::string m_path = m_scratch.path("daemon");
  const std::string m_ping = framed(request(0));
  const std::string m_found = answered(0, "", octets({object()->data(), object()->size()}));
  Statistics m_statistics;
  ScriptedBackend m_backend;
  Service m_service{m_backend, m_statistics};
  ScriptedTraffic m_traffic;
  ListeningSocket m_socket{m_path};
  EventLoop m_loop;
  std::string m_lastLine;  // logged
  std::optional<Server> m_server;
  std::thread m_thread;
};

TEST_F(ServerTest, EveryAnswerOfTheBackEndReachesTheClient) {
  start();
  const std::tuple<const char*, std::string, std::string> kRows[] = {
      {"success", lookup("now"), m_found},
      {"away", lookup("away"), answered(16, "no server")},
      {"a completion called twice counts once", lookup("twice") + m_ping, m_found + kPong},
      {"a completion that is dropped", lookup("drop"), refused(11, 1)},
      {"an exception", lookup("throw"), refused(11, 1)},
      {"not supported", framed(request(20, octets("host/x"))),
       answered(9, "This daemon does not support the operation", "", 20)},
      {"not supported, with an exception", framed(request(39, octets("x"))),
       thrown(9, "This daemon does not support the operation", 39)},
      {"a listing that cannot be opened", framed(request(13, integer(0) + integer(0) + integer(0))),
       answered(9, "This daemon does not support the operation", "", 13)},
      {"an unknown opcode", framed(request(48)), refused(48, 2)},
      {"a field that is missing", framed(request(20)), refused(20, 2)},
  };
  RawClient client(m_path);
  for (const auto& [what, request, reply] : kRows) EXPECT_EQ(client.ask(request, reply), reply) << what;
  EXPECT_TRUE(client.send(framed("no message at all")).isEnded());
}

TEST_F(ServerTest, ALateAnswerDelaysNoOtherClientAndKeepsItsOrder) {
  start();
  RawClient patient = client(), gone = client(), other = client();
  patient.send(lookup("later") + m_ping);
  gone.send(lookup("later"));
  awaitHeldBack(2);
  EXPECT_EQ(other.ask(lookup("now"), m_found), m_found);
  EXPECT_TRUE(patient.isQuiet());
  { const RawClient end = std::move(gone); }
  answerLater();
  EXPECT_EQ(patient.receive((m_found + kPong).size()), m_found + kPong);
  EXPECT_EQ(other.ask(m_ping, kPong), kPong);
}

TEST_F(ServerTest, ADelayedReplyHoldsUpItsConnectionAlone) {
  start();
  RawClient patient = client(), other = client();
  onLoop([this] { m_traffic.delay = std::chrono::milliseconds(1); });
  EXPECT_EQ(patient.ask(lookup("now") + m_ping, m_found + kPong), m_found + kPong);
  onLoop([this] { m_traffic.delay = std::chrono::hours(1); });
  patient.send(m_ping + m_ping);
  for (unsigned long carriedOut = 0; carriedOut < 3;) onLoop([&] { carriedOut = m_statistics.requests; });
  onLoop([this] { m_traffic.delay = {}; });
  EXPECT_EQ(other.ask(m_ping, kPong), kPong);
  EXPECT_TRUE(patient.isQuiet());
}

TEST_F(ServerTest, ClientsThatMakeNoProgressAreDroppedAndOthersStay) {
  startImpatient();
  RawClient idle = client(), half = client(), deaf = client(), waiting = client();
  EXPECT_EQ(idle.ask(m_ping, kPong), kPong);
  deaf.send(lookup("large"));
  half.send(m_ping.substr(0, 5));
  const std::string away = answered(16, "The directory does not answer");
  EXPECT_EQ(waiting.ask(lookup("later"), away), away);
  EXPECT_TRUE(half.isEnded());
  onLoop([] {});
  answerLater();
  EXPECT_EQ(waiting.ask(m_ping, kPong), kPong) << "a late answer after one in its place";
  EXPECT_EQ(idle.ask(m_ping, kPong), kPong);
}

TEST_F(ServerTest, ARequestMayBeAsLongAsTheLimit) {
  Limits limits;
  limits.frameBytes = 1000;
  start(limits);
  const auto padded = [](size_t size) {
    return framed(request(20, octets(std::string(size - request(20).size() - 4, 'x'))));
  };
  const std::string reply = answered(9, "This daemon does not support the operation", "", 20);
  ASSERT_EQ(padded(1000).size(), 1004u);
  EXPECT_EQ(client().ask(padded(1000), reply), reply);
  EXPECT_TRUE(client().send(padded(1001)).isEnded());
  EXPECT_TRUE(client().send(std::string(4, '\0')).isEnded());
  EXPECT_TRUE(client().send(word(UINT32_MAX)).isEnded());
}

TEST_F(ServerTest, ConnectionsOfAUserAreLimited) {
  Limits limits;
  limits.connectionsOfUser = 2;
  start(limits);
  RawClient first = client(), second = client();
  for (RawClient* one : {&first, &second}) EXPECT_EQ(one->ask(m_ping, kPong), kPong);
  EXPECT_TRUE(client().isEnded());
  onLoop(
      [this] { EXPECT_EQ(m_lastLine, "user " + std::to_string(geteuid()) + " has too many connections"); });
  EXPECT_EQ(second.ask(m_ping, kPong), kPong);
  EXPECT_TRUE(first.send(framed("no message at all")).isEnded()) << "makes room for another one";
  RawClient third = client();
  EXPECT_EQ(third.ask(m_ping, kPong), kPong);
  onLoop([this] { m_server->restart(); });
  EXPECT_TRUE(third.isEnded());
  RawClient fourth = client(), fifth = client();
  for (RawClient* one : {&fourth, &fifth}) EXPECT_EQ(one->ask(m_ping, kPong), kPong) << "after a restart";
}

TEST_F(ServerTest, TheOldestSearchGivesWayAndPagesHaveADefaultSize) {
  start();
  const std::string one = answered(0, "", integer(1) + octets({object()->data(), object()->size()}), 23);
  RawClient client(m_path);
  for (int handle = 1; handle <= 65; ++handle) {
    const std::string opened = answered(0, "", integer(handle), 22);
    EXPECT_EQ(client.ask(openSearch(handle == 65 ? 1 : handle == 64 ? 0 : 500), opened), opened);
  }
  EXPECT_EQ(client.ask(page(1), kUnknownSearch), kUnknownSearch) << "the oldest of 65 is still open";
  EXPECT_EQ(client.ask(page(2), one), one);
  EXPECT_EQ(client.ask(page(64), one), one);
  EXPECT_EQ(client.ask(page(65), kEmptyPage), kEmptyPage);
  EXPECT_EQ(client.ask(page(65), kUnknownSearch), kUnknownSearch) << "a search is closed after its last page";
  EXPECT_EQ(this->client().ask(page(64), kUnknownSearch), kUnknownSearch) << "the search of another client";
  onLoop([this] {
    EXPECT_EQ(m_backend.limits, (std::vector<size_t>{500, 100, 1}));
    EXPECT_EQ(m_backend.cutShort, 0) << "next() goes on after its completion";
  });
}

TEST_F(ServerTest, ALateLastPageEndsTheSearchBeforeTheNextRequest) {
  start();
  RawClient client(m_path);
  const std::string opened = answered(0, "", integer(1), 22);
  EXPECT_EQ(client.ask(openSearch(2), opened), opened);
  client.send(page(1) + page(1));
  awaitHeldBack(1);
  size_t asked = 0;
  onLoop([&] {
    const Done<Objects> done = m_backend.laterPages.front();
    done(Objects());
    asked = m_backend.laterPages.size();
  });
  EXPECT_EQ(asked, 1u) << "a page of a search that has ended";
  EXPECT_EQ(client.receive((kEmptyPage + kUnknownSearch).size()), kEmptyPage + kUnknownSearch);
}

// After a time-out the position of the search or listing is unknown, and its next() is still running.
TEST_F(ServerTest, ATimeOutEndsTheSearchOrListing) {
  startImpatient();
  const std::string away = "The directory does not answer", closed = "No listing of this kind is open";
  const auto list = [](const std::string& name) {
    return framed(request(11, integer(1) + integer(2) + integer(0) + integer(0) + integer(0) + octets(name)));
  };
  const std::array<std::string, 5> kRows[] = {
      {openSearch(2), answered(0, "", integer(1), 22), page(1), thrown(16, away, 23), kUnknownSearch},
      {framed(request(13, integer(1) + integer(0) + integer(0))), answered(0, "", "", 13), list("@#"),
       answered(16, away), thrown(33, closed, 11)},
  };
  RawClient client(m_path);
  for (const auto& [open, opened, next, late, gone] : kRows) {
    EXPECT_EQ(client.ask(open, opened), opened);
    EXPECT_EQ(client.ask(next, late), late);
    EXPECT_EQ(client.ask(next, gone), gone);
  }
  onLoop([this] { m_backend.laterPages.front()(Objects()); });
  answerLater();
  EXPECT_EQ(client.ask(m_ping, kPong), kPong) << "late answers that nobody waits for";
}

// In one thread: a pause in the first round of the loop, then a stop, and the calls of a timer and a signal.
TEST(AcceptorTest, AcceptsNoClientsAfterStop) {
  const ScratchDirectory scratch;
  ListeningSocket socket(scratch.path("daemon"));
  EventLoop loop;
  int accepted = 0;
  Acceptor acceptor(loop, socket, [&](Descriptor) { ++accepted; });
  const RawClient waiting(scratch.path("daemon"));
  const int before = acceptCalls;
  noDescriptors = true;
  loop.post([&] {
    noDescriptors = false;
    EXPECT_EQ(acceptCalls, before + 1) << "it has paused";
    acceptor.stop();
    acceptor.resume();
    EXPECT_FALSE(acceptor.restart());
    loop.post([&] { loop.stop(); });
  });
  loop.run();
  EXPECT_EQ(accepted, 0);
}

// Each ping is a round of the loop; a check of a waiting client would be another call.
TEST_F(ServerTest, AcceptingPausesWithoutDescriptors) {
  constexpr int kRounds = 500;
  start();
  RawClient first = client();
  EXPECT_EQ(first.ask(m_ping, kPong), kPong);
  const int before = acceptCalls;
  noDescriptors = true;
  RawClient waiting = client();
  waiting.send(m_ping);
  for (int i = 0; i < kRounds; ++i) ASSERT_EQ(first.ask(m_ping, kPong), kPong);
  EXPECT_LT(acceptCalls - before, kRounds / 2);
  EXPECT_GT(acceptCalls - before, 0);
  EXPECT_TRUE(waiting.isQuiet());
  noDescriptors = false;
  { const RawClient freesDescriptor = std::move(first); }
  EXPECT_EQ(waiting.receive(kPong.size()), kPong);
}

TEST_F(ServerTest, ARestartEndsEveryConnectionAndIsCounted) {
  start();
  RawClient idle = client(), waiting = client();
  EXPECT_EQ(idle.ask(m_ping, kPong), kPong);
  waiting.send(lookup("later"));
  awaitHeldBack(1);
  onLoop([this] { m_server->restart(); });
  EXPECT_TRUE(idle.isEnded() && waiting.isEnded());
  answerLater();  // too late
  EXPECT_EQ(client().ask(m_ping, kPong), kPong);
  EXPECT_EQ(m_statistics.restarts, 1u);
}

TEST_F(ServerTest, AFailedRestartIsLoggedAndChangesNothing) {
  start();
  RawClient client(m_path), other(m_path);
  EXPECT_EQ(client.ask(m_ping, kPong), kPong);
  std::filesystem::create_directory(m_path + ".new");
  bool isRestarted = true;
  std::string line;
  onLoop([&] {
    isRestarted = m_server->restart();
    line = m_lastLine;
    m_traffic.verdict = Traffic::Verdict::Restart;
  });
  EXPECT_FALSE(isRestarted);
  EXPECT_EQ(line, "cannot restart: " + m_path + ".new: Address already in use");
  EXPECT_TRUE(other.send(m_ping).isEnded()) << "a request that calls for a restart";
  onLoop([this] { m_traffic.verdict = Traffic::Verdict::CarryOut; });
  EXPECT_EQ(client.ask(m_ping, kPong), kPong);
  EXPECT_EQ(this->client().ask(m_ping, kPong), kPong);
  EXPECT_EQ(m_statistics.restarts, 0u);
}

TEST_F(ServerTest, StopDoesNotWaitForAClientThatReadsNothing) {
  start();
  RawClient deaf = client(), administrator = client();
  deaf.send(lookup("large"));
  EXPECT_FALSE(deaf.receive(100).empty());
  EXPECT_EQ(administrator.ask(framed(request(1)), refused(1, 0)), refused(1, 0));
  m_thread.join();
}

// Even a restart in the meantime does not truncate a reply.
TEST_F(ServerTest, StopDeliversPendingRepliesFirst) {
  start();
  RawClient reader = client(), administrator = client();
  reader.send(lookup("large"));
  const std::string large = answered(0, "", octets({m_backend.large->data(), m_backend.large->size()}));
  const std::string first = reader.receive(100);
  bool isRestarted = true;
  const auto restart = [&] { isRestarted = m_server->restart(); };
  onLoop([&] { m_traffic.onDeliver = [&] { m_loop.post(restart); }; });
  EXPECT_EQ(administrator.ask(framed(request(1)), refused(1, 0)), refused(1, 0));
  EXPECT_TRUE(first + reader.receive(large.size() - first.size()) == large);
  m_thread.join();
  EXPECT_FALSE(isRestarted);
  m_server.reset();
  EXPECT_FALSE(std::filesystem::exists(m_path));
  EXPECT_TRUE(reader.isEnded() && administrator.isEnded());
}

}  // namespace
}  // namespace brondalt
