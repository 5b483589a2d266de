/// Makes each system call of an operation fail in turn, in every way it can.
#pragma once

#include "tests/support/faults.h"
#include "tests/support/thrown.h"

namespace testsupport {

struct FaultPlan {
  Call call;
  int error;
  bool lasting;

  /// Whether the call can just be repeated.
  bool isInterruption() const { return error == EINTR && call != Call::Open; }
};

// clang-format off
inline constexpr FaultPlan kFaultPlans[] = {
    {Call::Allocate, ENOMEM, false}, {Call::Allocate, ENOMEM, true},
    {Call::Open, EMFILE, false}, {Call::Open, EINTR, false}, {Call::Open, ENFILE, true},
    {Call::Close, EIO, false}, {Call::Close, EINTR, false},
    {Call::Read, EINTR, false}, {Call::Read, EIO, true}, {Call::Read, Fault::kShort, true},
    {Call::Write, EINTR, false}, {Call::Write, ENOSPC, true}, {Call::Write, Fault::kShort, true},
    {Call::Inspect, EIO, false}, {Call::Inspect, EACCES, true},
    {Call::Change, EIO, false}, {Call::Change, ENOSPC, true},
    {Call::Wait, EINTR, false}, {Call::Wait, EIO, true},
};
// clang-format on

/// Runs `work` in another thread; a lock left held by this thread would block it, and the alarm ends the
/// program.
template <class Work>
void inAnotherThread(Work work) {
  constexpr unsigned kPatience = 60;  // seconds
  alarm(kPatience);
  std::thread(work).join();
  alarm(0);
}

/// Runs `attempt` with the first call of that kind failing, then the second, and so on to the last. Calls
/// `before` before each run and `after` with its outcome: "nothing", "no memory" or the exception's class.
/// Returns the number of runs with a failure.
template <class Before, class Attempt, class After>
unsigned failEachCall(const FaultPlan& plan, Before before, Attempt attempt, After after) {
  constexpr unsigned kEnough = 10000;
  unsigned failures = 0;
  for (unsigned nth = 1; nth < kEnough; nth += 1 + nth / 50) {
    SCOPED_TRACE(nameOf(plan.call) + " " + std::to_string(nth) + " error " + std::to_string(plan.error) +
                 (plan.lasting ? " lasting" : ""));
    before();
    std::string outcome = "nothing";
    try {
      const Fault fault(plan.call, nth, plan.error, plan.lasting);
      attempt();
    } catch (const std::bad_alloc&) {
      outcome = "no memory";
    } catch (const VESKException& failure) {
      outcome = failure.className();
    }
    after(outcome);
    if (!Fault::struck() || ::testing::Test::HasFailure()) return failures;
    ++failures;
  }
  ADD_FAILURE() << "there is always one more call";
  return failures;
}

}  // namespace testsupport
