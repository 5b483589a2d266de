// Many clients at once, each with its session, while the daemon is restarted, away, slow and wrong by turns:
// every answer is right, every failure is reported, and nothing piles up. A round takes some seconds; the
// environment variable FOKRAZO_LOAD_ROUNDS asks for more of them.

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include <fokrazo/session.h>
#include <fokrazo/thread.h>
#include "tests/support/standin_process.h"
#include "tests/support/operations.h"
#include "tests/support/world_test.h"
#include "util/thread/pause.h"

using namespace testsupport;
using namespace vesk;

namespace {

// The sanitizer multiplies memory, keeps it back when it is freed, and marks each byte of what is only
// announced.
constexpr bool kSanitized = SANITIZERS[0] != '\0';
constexpr unsigned kProcesses = kSanitized ? 16 : 64;
constexpr unsigned kThreads = kSanitized ? 16 : 64;
constexpr long kAnswersOfPhase = kSanitized ? 500 : 3000;
constexpr const char* kHugeReply = kSanitized ? "short%131" : "huge%131";
constexpr long kPauseAfterFailure = 2;  // milliseconds
constexpr long kMayGrow = 8 * 1024;     // KiB a process

// What the daemon does, one after the other.
const std::vector<std::string> kPhases[] = {
    {},
    {"--fault", "restart%500"},
    {"--fault", "drop%61", "--fault", "lose%47"},
    {"--fault", "garbage%41", "--fault", "empty%53"},
    {"--fault", "short%37", "--fault", "cut%43", "--fault", kHugeReply},
    {"--fault", "trickle%40", "--fault", "refuse%29"},
    {"--fault", "stall%300"},
};

// Shared by all processes.
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

  // One client asks until all is over.
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
        fprintf(stderr, "%s: %s\n", operation.call, outcome.c_str());
      }
    }
  }
  void askInThreads() {
    Thread::SetThreadsActive(true);
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < kThreads; ++i) threads.emplace_back([this, i] { ask(i); });
    for (std::thread& thread : threads) thread.join();
  }

  // In a process of its own: work, and no more descriptors and memory than at its start.
  template <class Work>
  void inProcess(Work work) {
    const pid_t pid = fork();
    if (pid != 0) return m_children.push_back(pid);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const long descriptors = openDescriptors(), memory = residentKilobytes();
    work();
    const long opened = openDescriptors() - descriptors, grown = residentKilobytes() - memory;
    const bool isFlat = opened == 0 && (kSanitized || grown < kMayGrow);
    if (!isFlat) fprintf(stderr, "%ld descriptors and %ld KiB more\n", opened, grown);
    _exit(isFlat ? 0 : 1);
  }

  // Waits until the number has grown by so much.
  void await(long growth, const std::atomic<long>& count) {
    const auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(100);
    for (const long end = count + growth; count < end; pause::forMilliseconds(5))
      if (std::chrono::steady_clock::now() > patience) FAIL() << "the clients come to a halt";
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
  for (int left = wanted ? atoi(wanted) : 1; left > 0; --left)
    for (const auto& arguments : kPhases) {
      m_standin->restart(arguments);
      await(kAnswersOfPhase, m_totals->right);
      m_standin->kill();
      await(kProcesses, m_totals->failures);
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
