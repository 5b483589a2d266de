#include "util/include/runqueue.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include <boost/make_shared.hpp>

#include "tests/support/thrown.h"
#include "tests/util/workers.h"
#include "util/include/error_util.h"
#include "util/include/timequeue.h"

using vesk::RunQueue;

namespace {

/// Work that calls a function. One with an identity looks for its duplicates.
class Work : public vesk::QueueAble {
 public:
  explicit Work(std::function<void()> body, std::string id = "", bool stays = false)
      : m_body(std::move(body)), m_id(std::move(id)), m_stays(stays) {}
  void run() override { m_body(); }
  bool dedupMe() override { return !m_id.empty(); }
  const std::string& getID() const override { return m_id; }
  bool keepQueuedItem(long) override { return m_stays; }

 private:
  std::function<void()> m_body;
  std::string m_id;
  bool m_stays;
};

template <class... Args>
void post(RunQueue& queue, Args... args) {
  queue.post(boost::make_shared<Work>(args...));
}

void fill(RunQueue& queue, int count) {
  for (int i = 0; i < count; ++i) post(queue, [] {});
}

/// A runner's look at the flags of a queue and nothing more.
void glance(RunQueue& queue) {
  queue.interrupt();
  EXPECT_THROW(queue.runQueue(-1), vesk::QueueInterrupted);
}

/// Serves the queue until it is interrupted.
std::unique_ptr<Worker> runnerOf(RunQueue& queue, Gate& left) {
  return std::make_unique<Worker>([&] {
    EXPECT_THROW(queue.runQueue(), vesk::QueueInterrupted);
    left.open();
  });
}

std::string run(RunQueue& queue, std::string& ran) {
  queue.runQueue(-1);
  return std::exchange(ran, "");
}

}  // namespace

TEST(RunQueueTest, RunsInOrderAndTakesDuplicatesOut) {
  RunQueue queue("order", 0, false);
  std::string ran;
  const auto note = [&](const char* what) { return [&ran, what] { ran += what; }; };
  for (const char* what : {"a", "b", "c", "d"}) post(queue, note(what));
  queue.pop_back();
  EXPECT_FALSE(queue.isEmpty());
  EXPECT_EQ(run(queue, ran), "abc");
  EXPECT_TRUE(queue.isEmpty());
  for (const bool queuedStays : {true, false}) {
    post(queue, note("1"), "same", queuedStays);
    post(queue, note("a"), "other");
    post(queue, note("2"), "same");
    EXPECT_EQ(run(queue, ran), queuedStays ? "1a" : "a2");
  }
  post(queue, note("a"));
  glance(queue);
  EXPECT_EQ(ran, "") << "an interrupt comes before the work";
  post(queue, [] { throw vesk::QueueInterrupted(); });
  post(queue, note("b"));
  post(queue, [] { throw std::runtime_error("none of the family's"); });
  post(queue, note("c"));
  EXPECT_THROW(queue.runQueue(-1), std::runtime_error);
  EXPECT_EQ(run(queue, ran), "abc");
}

TEST(RunQueueTest, RegistryKeepsOneQueueToAName) {
  EXPECT_EQ(RunQueue::getRunQueue("registered", false, 1), nullptr);
  RunQueue* made = RunQueue::getRunQueue("registered", true, 0);
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(vesk::TimeQueue::getTimeQueue("registered", true, 3), made);
  EXPECT_NE(vesk::TimeQueue::getTimeQueue("other", true, 0), made);
}

TEST(RunQueueTest, PostersSlowDownFromHalfFullOn) {
  const struct {
    unsigned int maxSize;
    int posts;
    std::size_t pauses;
  } rows[] = {{10, 7, 3}, {1, 1, 1}, {0, 50, 0}};
  for (const auto& row : rows) {
    RunQueue queue("limited", row.maxSize, false);
    RecordedPauses pauses;
    fill(queue, row.posts);
    EXPECT_EQ(pauses.taken(), std::vector<long>(row.pauses, 10)) << row.maxSize;
  }
}

TEST(RunQueueTest, APosterAtAFullQueueGivesUpAfterABoundedTime) {
  std::vector<long> expected(6, 10);  // from half full on, then the wait of the last one
  for (long pause = 0; pause < 1000; pause += 10) expected.push_back(pause);
  for (const bool isLogQueue : {false, true}) {
    RunQueue queue("limited", 10, isLogQueue);
    RecordedPauses pauses;
    std::string thrown;
    try {
      thrown = testsupport::thrownBy([&] { fill(queue, 11); });
    } catch (const std::out_of_range& e) {
      thrown = e.what();
    }
    EXPECT_EQ(thrown, isLogQueue ? "runqueue full 10" : "BufferFullException -1 runqueue full 10");
    EXPECT_EQ(pauses.taken(), expected);
  }
}

TEST(RunQueueTest, CongestionEndsWhenAThirdIsLeft) {
  RunQueue queue("limited", 10, false);
  {
    RecordedPauses ignored;
    fill(queue, 10);
  }
  // The poster goes on waiting when a runner sees four items, and posts when it sees three.
  RecordedPauses pauses([&](long pause) {
    for (int i = 0; i < (pause == 0 ? 6 : 1); ++i) queue.pop_back();
    glance(queue);
  });
  fill(queue, 1);
  EXPECT_EQ(pauses.taken(), (std::vector<long>{0, 10}));
}

TEST(RunQueueThreads, TheRunnerPostsPastTheLimitAndIsNeverHeldUp) {
  RunQueue queue("limited", 2, false);
  RecordedPauses pauses;
  Gate left, done;
  auto runner = runnerOf(queue, left);
  post(queue, [&] {
    for (int i = 0; i < 20; ++i) post(queue, [&] { done.open(); });
  });
  done.wait(20);
  EXPECT_EQ(pauses.taken().size(), 1u) << "the first poster's own";
  queue.interrupt();
  runner.reset();
  fill(queue, 1);  // nobody counts as the runner now
  EXPECT_EQ(pauses.taken().size(), 2u);
}

TEST(RunQueueThreads, ACancelledRunnerLeavesItsPlace) {
  RunQueue queue("left", 2, false);
  cancelAt([&](auto point) {
    vesk::Thread::disableKill();
    point();
    pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, nullptr);
    queue.runQueue(-1);
  });
  RecordedPauses pauses;
  fill(queue, 1);
  EXPECT_EQ(pauses.taken().size(), 1u);
}

TEST(RunQueueThreads, ATimedRunnerLeavesAnEmptyQueueWhenTheTimeIsOver) {
  RunQueue queue("timed", 0, false);
  MovedDay day;
  Gate started, late, done;
  Worker runner([&] { queue.runQueue(1000); });
  post(queue, [&] {
    started.open();
    late.wait();
  });
  started.wait();
  day.moveTo(2000);
  for (int i = 0; i < 3; ++i) post(queue, [&] { done.open(); });
  late.open();
  done.wait(3);
}

TEST(RunQueueThreads, ShutdownRunsWhatIsLeftAndRefusesTheRest) {
  Watched<RunQueue> queue("ending", 2, false);
  Gate left, busy, release, ran;
  auto runner = runnerOf(queue, left);
  std::unique_ptr<Worker> stopper;
  RecordedPauses pauses([&](long pause) {
    if (pause != 0) return;
    stopper = std::make_unique<Worker>([&] { queue.shutdown(*runner); });
    queue.interrupted.wait();
  });
  post(queue, [&] {
    busy.open();
    release.wait();
  });
  busy.wait();
  for (int i = 0; i < 2; ++i) post(queue, [&] { ran.open(); });
  EXPECT_THROW(fill(queue, 1), vesk::EndOfFileException)
      << "the queue closes while this poster waits for room";
  release.open();
  stopper.reset();
  ran.wait(2);
  EXPECT_TRUE(queue.isEmpty());
  EXPECT_THROW(fill(queue, 1), vesk::EndOfFileException);
}

/// Several posters and runners on one small queue: each item runs exactly once, each interrupt sends one
/// runner away. QUEUE_SOAK_ITEMS sets the items of each poster for a longer run.
TEST(RunQueueThreads, SoakLosesAndDoublesNothing) {
  const char* wanted = getenv("QUEUE_SOAK_ITEMS");
  const std::size_t items = wanted ? std::max(atoi(wanted), 1) : 20'000;
  RunQueue queue("soak", 64, false);
  RecordedPauses pauses([](long) { sched_yield(); });
  std::vector<std::atomic<int>> runs(4 * items);
  Gate left;
  std::vector<std::unique_ptr<Worker>> runners, posters;
  for (int i = 0; i < 3; ++i) runners.push_back(runnerOf(queue, left));
  for (auto first = runs.begin(); first != runs.end(); first += items)
    posters.push_back(std::make_unique<Worker>([&, first] {
      for (auto mine = first; mine != first + items;) try {
          post(queue, [mine] { ++*mine; });
          ++mine;
        } catch (const vesk::BufferFullException&) {
        }
    }));
  posters.clear();
  for (int i = 1; i <= 3; ++i) {
    queue.interrupt();
    left.wait(i);
  }
  runners.clear();
  queue.runQueue(-1);
  EXPECT_TRUE(std::all_of(runs.begin(), runs.end(), [](const auto& count) { return count == 1; }));
}
