// Many sessions, and then the threads of a client, while the daemon is restarted, stopped, slow and faulty in
// turn: every answer is right, every failure is reported, and nothing accumulates. A round takes some
// seconds; the environment variable FOKRAZO_LOAD_ROUNDS sets their number.

#include <malloc.h>
#include <sys/mman.h>
#include <sys/prctl.h>

#include <numeric>

#include <fokrazo/client.h>
#include "tests/support/operations.h"
#include "tests/support/standin_process.h"
#include "tests/support/world_test.h"
#include "util/thread/pause.h"

using namespace testsupport;
using namespace vesk;

namespace {

// The sanitizer multiplies memory, retains freed memory, and touches reserved memory.
constexpr bool kSanitized = SANITIZERS[0] != '\0';
constexpr unsigned kProcesses = kSanitized ? 16 : 64;
constexpr unsigned kThreads = kSanitized ? 16 : 64;
constexpr long kAnswersOfPhase = kSanitized ? 500 : 3000;
constexpr const char* kHugeReply = kSanitized ? "short%131" : "huge%131";
constexpr long kPauseAfterFailure = 2;        // milliseconds
constexpr long kMayGrow = 256;                // KiB for each process
constexpr unsigned long kRestartEvery = 500;  // requests
constexpr unsigned long kSignals = 20;

const std::vector<std::string> kFaults[] = {
    {"--fault", "drop%61", "--fault", "lose%47"},
    {"--fault", "garbage%41", "--fault", "empty%53"},
    {"--fault", "short%37", "--fault", "cut%43", "--fault", kHugeReply},
    {"--fault", "trickle%40", "--fault", "refuse%29"},
    {"--fault", "stall%300"},
};

struct DaemonState {
  unsigned long requests, restarts;
};

constexpr size_t kLatest = 1000;  // milliseconds

struct Totals {
  std::atomic<bool> over{false};
  std::atomic<long> right{0}, failures{0}, wrong{0};
  // Of the calls that ended at their deadline or later: how many did so many milliseconds after it.
  std::array<std::atomic<long>, kLatest + 1> late{};
};

// A key, and the DN of the user that it is for; "none" if there is none.
struct Known {
  ObjectKey key;
  std::string answer;
};

constexpr size_t kKeys = 4;  // for each user

std::vector<Known> everyUser(LocalRpcSession& session) {
  std::vector<Known> known;
  session.startListUser();
  thrownBy([&] {
    while (true) {
      const auto user = session.getUser2(NEXT_ENTRY, UNIX_ONLY);
      for (const ObjectKey& key :
           {ObjectKey(user->unixName()), ObjectKey(user->getSid()), ObjectKey(user->getId())})
        known.push_back({key, user->getDN()});
      known.push_back({"no " + user->unixName(), "none"});
    }
  });
  return known;
}

// What a call answers; empty if it fails.
std::string answerOf(const CallStatus& status) {
  return status.result == VR_NO_REPLY_YET ? "" : text(status.result);
}
template <class T>
std::string answerOf(const CallResult<T>& result) {
  if (result) return text(result.share());
  return result.status().outcome == CallOutcome::NotFound ? "none" : "";
}
template <class T>
std::string answerOf(ObjectRange<T> range) {
  while (range.next()) continue;
  return range.status() ? text(range.count()) : "";
}

// Allocated memory, without what is free and retained for later.
long usedKilobytes() {
  const struct mallinfo2 memory = mallinfo2();
  return static_cast<long>((memory.uordblks + memory.hblkhd) / 1024);
}

class LoadTest : public WorldTest {
 protected:
  void SetUp() override {
    WorldTest::SetUp();
    if (IsSkipped()) return;
    configure("log: FATAL\nlrpc.timeout: 1\n");
    void* shared = mmap(nullptr, sizeof(Totals), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(shared, MAP_FAILED);
    m_totals = new (shared) Totals;
    m_standin = std::make_unique<StandinProcess>();
  }
  void TearDown() override {
    m_standin.reset();
    if (m_totals) munmap(m_totals, sizeof(Totals));
    WorldTest::TearDown();
  }

  void ask(unsigned seed) {
    LocalRpcSession session(m_standin->socket(), false, seed % 2 == 0);
    for (size_t i = seed; !m_totals->over; ++i) {
      const Operation& operation = operations()[i % operations().size()];
      const std::string outcome = operation.make(session);
      if (outcome == operation.outcome) {
        ++m_totals->right;
      } else if (isFailure(operation, outcome)) {
        ++m_totals->failures;
        pause::forMilliseconds(kPauseAfterFailure);
      } else {
        ++m_totals->wrong;
        fprintf(stderr, "%s: %s\n", operation.name, outcome.c_str());
      }
    }
  }
  template <class Ask>
  void inThreads(Ask ask) {
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < kThreads; ++i) threads.emplace_back(ask, i);
    for (std::thread& thread : threads) thread.join();
  }

  // --- Through a client ---

  void judge(const std::string& answer, const std::string& expected) {
    if (answer == expected) {
      ++m_totals->right;
    } else if (answer.empty()) {
      ++m_totals->failures;
      pause::forMilliseconds(kPauseAfterFailure);
    } else {
      ++m_totals->wrong;
      fprintf(stderr, "%s instead of %s\n", answer.c_str(), expected.c_str());
    }
  }

  // What `call` returns. Notes how late it does.
  template <class Call>
  auto within(const CallOptions& options, Call call) {
    using namespace std::chrono;
    const auto end = steady_clock::now() + *options.deadline;
    auto result = call();
    const auto late = duration_cast<milliseconds>(steady_clock::now() - end).count();
    if (late >= 0) ++m_totals->late[std::min<size_t>(late, kLatest)];
    return result;
  }

  void askOne(Client& client, size_t number, const CallOptions& options) {
    const auto& [key, answer] = known(number);
    judge(answerOf(within(options, [&, &key = key] { return client.user(key, 0, options); })), answer);
  }
  void askMany(Client& client, size_t number, const CallOptions& options) {
    std::vector<ObjectKey> keys;
    while (keys.size() < 20) keys.push_back(known(number + keys.size()).key);
    const auto results = within(options, [&] { return client.users(keys, 0, options); });
    for (size_t i = 0; i < keys.size(); ++i) judge(answerOf(results[i]), known(number + i).answer);
  }
  void askOther(Client& client, size_t number, const CallOptions& options) {
    const Shredder word("Paper-boat-42");
    const std::pair<std::function<std::string()>, std::string> questions[] = {
        {[&] { return answerOf(client.users(UNIX_ONLY, options)); }, text(m_known.size() / kKeys)},
        {[&] { return answerOf(client.search("", "", "(objectClass=group)", {}, ScopeSubtree, 5, options)); },
         "11"},
        {[&] { return answerOf(client.authenticate("lquispe", word, options)); }, "0"},
        {[&] { return answerOf(client.changePassword("nobody", word, word, options)); }, "1"},
        {[&] { return answerOf(client.group("Büro", 0, options)); },
         "CN=Büro,OU=Groups,OU=Corp,DC=example,DC=com"},
    };
    const auto& [ask, answer] = questions[number % std::size(questions)];
    judge(ask(), answer);
  }

  // All threads share two clients, one of which keeps some answers.
  void askThroughClients() {
    constexpr int kDeadlines[] = {50, 200, 1000};  // milliseconds
    ClientOptions options;
    options.socketPath = m_standin->socket();
    options.trustedPeer = geteuid();
    Client client(options);
    options.cache.entries = 4;  // few, so that the daemon is asked, too
    Client keeping(options);
    inThreads([&](size_t seed) {
      for (size_t i = 97 * seed; !m_totals->over; ++i) {
        const auto ask = i % 8 == 0   ? &LoadTest::askMany
                         : i % 8 == 1 ? &LoadTest::askOther
                                      : &LoadTest::askOne;
        CallOptions limits;
        limits.deadline = std::chrono::milliseconds(kDeadlines[i % 3]);
        (this->*ask)(i / 8 % 2 == 0 ? client : keeping, i / 8 + i, limits);
      }
    });
  }

  // In its own process: works, and ends with no more descriptors and memory than at its start.
  template <class Work>
  void inProcess(Work work) {
    const pid_t parent = getpid(), pid = fork();
    if (pid != 0) return m_children.push_back(pid);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(1);  // the parent ended before the line above
    const long descriptors = openDescriptors(), memory = usedKilobytes();
    work();
    const long opened = openDescriptors() - descriptors, grown = usedKilobytes() - memory;
    const bool isFlat = opened == 0 && (kSanitized || grown < kMayGrow);
    if (!isFlat) fprintf(stderr, "%ld descriptors and %ld KiB more\n", opened, grown);
    _exit(isFlat ? 0 : 1);
  }

  // Waits until `isReached`. Fails only if no client gets an answer for a long time.
  template <class Condition>
  void await(Condition isReached) {
    using Clock = std::chrono::steady_clock;
    const auto patience = std::chrono::seconds(100);
    long moves = -1;
    for (auto end = Clock::now() + patience; !isReached(); pause::forMilliseconds(5)) {
      const long now = m_totals->right + m_totals->failures;
      if (now != std::exchange(moves, now)) end = Clock::now() + patience;
      ASSERT_LT(Clock::now(), end) << "the clients come to a halt";
    }
  }
  void awaitGrowth(const std::atomic<long>& count, long growth) {
    await([&count, end = count + growth] { return count >= end; });
  }

  // Sends requests until the daemon answers.
  DaemonState state() {
    LocalRpcSession session(m_standin->socket(), false, false);
    std::string text;
    await([&] {
      try {
        text = session.getSystemInfo(0);
      } catch (const VESKException&) {
        return false;
      }
      return true;
    });
    const auto number = [&](const std::string& title) {
      const size_t start = text.find("\n" + title + ": ");
      return start == std::string::npos ? 0 : std::stoul(text.substr(start + title.size() + 3));
    };
    return {number("requests"), number("restarts")};
  }

  // The daemon restarts periodically; it does not carry out the request at which it restarts.
  void restartByRequests() {
    m_standin->restart({"--fault", "restart%" + std::to_string(kRestartEvery)});
    awaitGrowth(m_totals->right, kAnswersOfPhase);
    const DaemonState now = state();
    EXPECT_GT(now.restarts, 0u);
    EXPECT_EQ(now.restarts, (now.requests + now.restarts) / kRestartEvery);
  }

  void restartBySignals() {
    m_standin->restart({});
    for (unsigned long sent = 1; sent <= kSignals; ++sent) {
      awaitGrowth(m_totals->right, kAnswersOfPhase / static_cast<long>(kSignals));
      m_standin->signal(SIGHUP);
      await([&] { return state().restarts >= sent; });
      EXPECT_EQ(state().restarts, sent);
    }
  }

  // Clients get answers despite each fault; they fail only while there is no daemon.
  void misbehave() {
    for (const auto& arguments : kFaults) {
      m_standin->restart(arguments);
      awaitGrowth(m_totals->right, kAnswersOfPhase);
      m_standin->kill();
      awaitGrowth(m_totals->failures, kProcesses);
    }
  }

  // While the processes work.
  void run() {
    const char* wanted = getenv("FOKRAZO_LOAD_ROUNDS");
    for (int left = wanted ? atoi(wanted) : 1; left > 0 && !HasFailure(); --left) {
      restartByRequests();
      restartBySignals();
      misbehave();
    }
    m_standin->restart({});
    m_totals->over = true;
    for (const pid_t child : m_children) {
      int status = -1;
      waitpid(child, &status, 0);
      EXPECT_EQ(status, 0);
    }
    const long right = m_totals->right, failures = m_totals->failures, wrong = m_totals->wrong;
    printf("%ld operations, %ld right answers, %ld failures, %ld wrong answers\n", right + failures + wrong,
           right, failures, wrong);
    EXPECT_EQ(wrong, 0);
  }

  const Known& known(size_t number) const { return m_known[number % m_known.size()]; }

  Totals* m_totals = nullptr;
  std::vector<Known> m_known;
  std::unique_ptr<StandinProcess> m_standin;
  std::vector<pid_t> m_children;
};

TEST_F(LoadTest, EveryAnswerIsRightWhateverTheDaemonDoes) {
  fflush(nullptr);
  for (unsigned i = 0; i < kProcesses; ++i) inProcess([this, i] { ask(i); });
  inProcess([this] {
    Thread::SetThreadsActive(true);
    inThreads([this](unsigned seed) { ask(seed); });
  });
  run();
}

TEST_F(LoadTest, EveryCallOfAClientIsRightAndReturns) {
  {
    LocalRpcSession session(m_standin->socket(), false, false);
    m_known = everyUser(session);
  }
  ASSERT_FALSE(m_known.empty());
  fflush(nullptr);
  inProcess([this] { askThroughClients(); });
  run();
  const long all = std::accumulate(m_totals->late.begin(), m_totals->late.end(), 0L);
  size_t within = 0;
  for (long left = all - all / 100; within < kLatest && (left -= m_totals->late[within]) > 0;) ++within;
  printf("%ld calls lasted until their deadline, 99%% of them at most %zu ms longer\n", all, within + 1);
}

}  // namespace
