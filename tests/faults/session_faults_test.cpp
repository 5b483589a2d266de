// A session while the system fails it: what an operation says is right or a told failure, nothing is left
// behind, and the same session works afterwards.

#include <algorithm>
#include <map>

#include "lrpc/session.h"
#include "tests/faults/fault_plans.h"
#include "tests/standin/standin_process.h"
#include "tests/support/queries.h"
#include "tests/support/world_test.h"
#include "util/include/properties.h"

using namespace testsupport;
using vesk::LocalRpcSession;

namespace {

class SessionFaultsTest : public WorldTest {
 protected:
  void SetUp() override {
    WorldTest::SetUp();
    if (IsSkipped()) return;
    m_standin = std::make_unique<StandinProcess>();
    m_session = std::make_unique<LocalRpcSession>(m_standin->socket(), false, true);
    for (const Query& query : queries()) m_answers[query.name] = query.ask(*m_session);
    m_session->dropConnection();
    m_descriptors = openDescriptors();
  }
  void TearDown() override {
    m_session.reset();
    m_standin.reset();
    WorldTest::TearDown();
  }

  // What may come out of an exchange that fails on this side. The daemon's exceptions have no name: it says
  // that it knows no search of another connection.
  static bool isTold(const std::string& outcome) {
    static const std::vector<std::string> all = {"",
                                                 "nothing",
                                                 "no memory",
                                                 "ConnectionBrokenException",
                                                 "TimeoutException",
                                                 "IOException",
                                                 "SystemException",
                                                 "vesk::SystemException"};
    return std::find(all.begin(), all.end(), outcome) != all.end();
  }

  // A descriptor that cannot be inspected is not known to be the session's own, and it stays open.
  void checkRest(const Query& query, bool mayLeak) {
    EXPECT_EQ(query.ask(*m_session), m_answers[query.name]);
    m_session->dropConnection();
    if (mayLeak) closeOthers();
    EXPECT_EQ(openDescriptors(), m_descriptors);
    EXPECT_EQ(Props(false, false)->mutex.owner(), pthread_t{});
    EXPECT_EQ(vesk::Properties::gPropMtx.owner(), pthread_t{});
  }

  void closeOthers() {
    std::vector<int> others;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
      const int fd = std::stoi(entry.path().filename());
      struct stat info;
      if (fstat(fd, &info) == 0 && S_ISSOCK(info.st_mode)) others.push_back(fd);
    }
    for (const int fd : others) close(fd);
  }

  std::unique_ptr<StandinProcess> m_standin;
  std::unique_ptr<LocalRpcSession> m_session;
  std::map<std::string, std::string> m_answers;
  long m_descriptors = 0;
};

TEST_F(SessionFaultsTest, EachCallOfEachOperationFails) {
  unsigned failures = 0;
  for (const Query& query : queries()) {
    SCOPED_TRACE(query.name);
    for (const FaultPlan& plan : faultPlans()) {
      std::string answer;
      failures += failEachCall(
          plan, [&] { answer.clear(); }, [&] { answer = query.ask(*m_session); },
          [&](const std::string& outcome) {
            EXPECT_PRED1(isTold, outcome);
            EXPECT_TRUE(outcome != "nothing" || answer == m_answers[query.name]) << answer;
            checkRest(query, plan.call == Call::Inspect);
          });
      if (HasFailure()) return;
    }
  }
  printf("%u failures of the system in %zu operations\n", failures, queries().size());
}

TEST_F(SessionFaultsTest, ASignalInterruptsEverything) {
  const unsigned long before = Interruptions::count();
  {
    const Interruptions interruptions;
    for (int round = 0; round < 20 || Interruptions::count() < before + 100; ++round)
      for (const Query& query : queries()) {
        EXPECT_EQ(query.ask(*m_session), m_answers[query.name]) << query.name;
        if (round % 4 == 0) m_session->dropConnection();
      }
  }
  printf("%lu signals\n", Interruptions::count() - before);
  checkRest(queries()[0], false);
}

}  // namespace
