// A session while calls of the system fail: an operation returns the right answer or throws an exception that
// the header names, nothing leaks, and the same session works afterwards.

#include "tests/faults/fault_plans.h"
#include "tests/support/operations.h"
#include "tests/support/standin_process.h"
#include "tests/support/world_test.h"

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
    m_descriptors = openDescriptors();
  }
  void TearDown() override {
    m_session.reset();
    m_standin.reset();
    WorldTest::TearDown();
  }

  // Returns the number of failures. Calls `prepare` before each attempt.
  template <class Prepare>
  unsigned failEachCallOf(const Operation& operation, LocalRpcSession& session, Prepare prepare) {
    SCOPED_TRACE(operation.name);
    unsigned failures = 0;
    for (const FaultPlan& plan : kFaultPlans) {
      std::string outcome;
      const auto before = [&] {
        prepare();
        outcome = operation.outcome;
      };
      failures += failEachCall(
          plan, before, [&] { outcome = operation.make(session); },
          [&](const std::string& thrown) {
            const bool isRight = outcome == operation.outcome;
            EXPECT_TRUE(thrown == "nothing" || thrown == "no memory") << thrown;
            EXPECT_TRUE(isRight || (!isHarmless(plan) && isFailure(operation, outcome))) << outcome;
            prepare();
            checkRest(operation, session, plan.call == Call::Inspect && (isRight || plan.lasting));
          });
      if (HasFailure()) break;
    }
    return failures;
  }

  // A short or interrupted transfer continues. A read is never interrupted once its bytes have arrived.
  static bool isHarmless(const FaultPlan& plan) {
    return plan.error == Fault::kShort || (plan.isInterruption() && plan.call != Call::Read);
  }

  // A session does not close a descriptor that it cannot inspect, because it may not be its own, and uses a
  // new one.
  void checkRest(const Operation& operation, LocalRpcSession& session, bool mayLeak) {
    inAnotherThread([&] { EXPECT_EQ(operation.make(session), operation.outcome); });
    if (mayLeak || !m_staysConnected) session.dropConnection();
    if (mayLeak) closeSockets();
    EXPECT_EQ(openDescriptors(), m_descriptors + (session.socket() != -1));
  }

  void closeSockets() {
    struct stat info;
    for (int fd = 0; fd < 1000; ++fd)
      if (fstat(fd, &info) == 0 && S_ISSOCK(info.st_mode)) close(fd);
  }

  std::unique_ptr<StandinProcess> m_standin;
  std::unique_ptr<LocalRpcSession> m_session;
  long m_descriptors = 0;
  bool m_staysConnected = false;  // between failures: failures of connect are already tested
};

TEST_F(SessionFaultsTest, EveryOperationSurvivesTheFailureOfEachCall) {
  constexpr size_t kConnecting = 2;  // one that is repeated and one that is not
  unsigned failures = 0;
  for (size_t i = 0; i < operations().size() && !HasFailure(); ++i) {
    m_staysConnected = i >= kConnecting;
    failures += failEachCallOf(operations()[i], *m_session, [] {});
  }
  printf("%u failures of the system in %zu operations\n", failures, operations().size());
}

// The stand-in is started again for each failure, so it serves an empty directory.
TEST_F(SessionFaultsTest, StopSurvivesTheFailureOfEachCall) {
  put(in("nobody.ldif"), "");
  StandinProcess standin({}, in("nobody.ldif"));
  LocalRpcSession session(standin.socket(), false, true);
  m_descriptors = openDescriptors();
  const unsigned failures = failEachCallOf(stopOperation(), session, [&] {
    standin.restart({});
    session.dropConnection();
  });
  standin.restart({});
  printf("%u failures of the system\n", failures);
}

TEST_F(SessionFaultsTest, OperationsSucceedWhileSignalsInterruptThem) {
  const unsigned long before = Interruptions::count();
  {
    const Interruptions interruptions;
    for (int round = 0; round < 8 || Interruptions::count() < before + 100; ++round)
      for (const Operation& operation : operations()) {
        EXPECT_EQ(operation.make(*m_session), operation.outcome) << operation.name;
        if (round % 4 == 0) m_session->dropConnection();
      }
  }
  printf("%lu signals\n", Interruptions::count() - before);
  checkRest(operations()[0], *m_session, false);
}

}  // namespace
