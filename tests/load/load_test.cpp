// Many clients, each with a session, while the daemon is restarted, stopped, slow and faulty in turn: every
// answer is right, every failure is reported, and nothing accumulates. A round takes some seconds; the
// environment variable FOKRAZO_LOAD_ROUNDS sets their number.

#include <sys/mman.h>
#include <sys/prctl.h>

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
constexpr long kMayGrow = 8 * 1024;           // KiB for each process
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

struct Totals {
  std::atomic<bool> over{false};
  std::atomic<long> right{0}, failures{0}, wrong{0};
};

long residentKilobytes() {
  std::ifstream file("/proc/self/statm");
  long total = 0, resident = 0;
  file >> total >> resident;
  return resident * (sysconf(_SC_PAGESIZE) / 1024);
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
  void askInThreads() {
    Thread::SetThreadsActive(true);
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < kThreads; ++i) threads.emplace_back([this, i] { ask(i); });
    for (std::thread& thread : threads) thread.join();
  }

  // In its own process: works, and ends with no more descriptors and memory than at its start.
  template <class Work>
  void inProcess(Work work) {
    const pid_t parent = getpid(), pid = fork();
    if (pid != 0) return m_children.push_back(pid);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(1);  // the parent ended before the line above
    const long descriptors = openDescriptors(), memory = residentKilobytes();
    work();
    const long opened = openDescriptors() - descriptors, grown = residentKilobytes() - memory;
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

  Totals* m_totals = nullptr;
  std::unique_ptr<StandinProcess> m_standin;
  std::vector<pid_t> m_children;
};

TEST_F(LoadTest, EveryAnswerIsRightWhateverTheDaemonDoes) {
  const char* wanted = getenv("FOKRAZO_LOAD_ROUNDS");
  fflush(nullptr);
  for (unsigned i = 0; i < kProcesses; ++i) inProcess([this, i] { ask(i); });
  inProcess([this] { askInThreads(); });
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

}  // namespace
