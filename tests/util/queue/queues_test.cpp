// Work queues and timed queues.

#include <boost/make_shared.hpp>

#include "tests/support/thrown.h"
#include "tests/support/workers.h"

using vesk::RunQueue;
using vesk::TimedEvent;
using vesk::TimeQueue;

namespace {

/// Work that calls a function. Items with the same identity are duplicates.
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

/// A runner that only checks the queue's flags.
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

TEST(RunQueueTest, RunsInOrderAndRemovesDuplicates) {
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

TEST(RunQueueTest, TheRegistryHasOneQueuePerName) {
  RunQueue* made = RunQueue::getRunQueue("registered", true, 0);
  EXPECT_EQ(TimeQueue::getTimeQueue("registered", true, 3), made);
  EXPECT_EQ(RunQueue::getRunQueue("other", false, 1), nullptr);
}

TEST(RunQueueTest, PostersSlowDownWhenHalfFullAndGiveUpWhenFull) {
  const std::tuple<int, int, int> rows[] = {{10, 7, 3}, {1, 1, 1}, {0, 50, 0}, {10, 11, 106}};
  for (const bool isLogQueue : {false, true})
    for (const auto& [maxSize, posts, expected] : rows) {
      RunQueue queue("limited", maxSize, isLogQueue);
      RecordedPauses pauses;
      const auto postAll = [&, count = posts] { fill(queue, count); };
      if (maxSize == 0 || posts <= maxSize)
        postAll();
      else if (isLogQueue)
        EXPECT_THROW(postAll(), std::out_of_range);
      else
        EXPECT_EQ(testsupport::thrownBy(postAll), "BufferFullException -1 runqueue full 10");
      std::vector<long> wanted(std::min(expected, 6), 10);  // at the full queue: 0, 10, 20 …
      for (int i = 6; i < expected; ++i) wanted.push_back(10 * (i - 6));
      EXPECT_EQ(pauses.taken(), wanted) << maxSize;
    }
}

TEST(RunQueueTest, CongestionEndsWhenAThirdIsLeft) {
  RunQueue queue("limited", 10, false);
  {
    RecordedPauses ignored;
    fill(queue, 10);
  }
  // The poster keeps waiting while a runner sees five or four items, and posts when it sees three.
  RecordedPauses pauses([&](long pause) {
    for (int i = 0; i < (pause == 0 ? 5 : 1); ++i) queue.pop_back();
    glance(queue);
  });
  fill(queue, 1);
  EXPECT_EQ(pauses.taken(), (std::vector<long>{0, 10, 20}));
}

TEST(RunQueueThreads, TheFirstRunnerKeepsItsRoleUntilAnotherServes) {
  RunQueue queue("limited", 2, false);
  RecordedPauses pauses;
  Gate first, second;
  Worker early([&] {
    post(queue, [&] { fill(queue, 20); });  // only this thread could make room
    queue.runQueue(-1);
    fill(queue, 20);
    first.open();
    second.wait();
    fill(queue, 1);
  });
  first.wait();
  Worker([&] {
    queue.runQueue(-1);
    fill(queue, 5);
  });
  queue.runQueue(-1);
  fill(queue, 20);  // a thread that the class Thread has not started is remembered, too
  EXPECT_EQ(pauses.taken().size(), 1u) << "by the first poster, before it was a runner";
  queue.runQueue(-1);
  second.open();
  early.join();
  EXPECT_EQ(pauses.taken(), std::vector<long>(2, 10));
}

TEST(RunQueueThreads, ACancelledRunnerReleasesItsRole) {
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

TEST(RunQueueThreads, ShutdownRunsQueuedItemsAndRefusesNewOnes) {
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

// Several posters and runners on one small queue; each interrupt ends one runner.
TEST(RunQueueThreads, EachItemRunsExactlyOnce) {
  constexpr std::size_t items = 5'000;  // per poster
  RunQueue queue("soak", 64, false);
  RecordedPauses pauses([](long) { sched_yield(); });
  std::vector<std::atomic<int>> runs(4 * items);
  Gate left;
  std::list<std::unique_ptr<Worker>> runners, posters;
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
  EXPECT_EQ(std::count(runs.begin(), runs.end(), 1), 4 * items);
}

using Event = std::function<void()>;

void runEvent(void* event) {
  (*static_cast<Event*>(event))();
}

void schedule(TimeQueue& queue, long delay, Event& event, bool periodic = false) {
  queue.post(boost::make_shared<TimedEvent>("", delay, runEvent, &event, false, periodic));
}

/// A single thread, and a clock that the tests move.
class TimeQueueTest : public testing::Test {
 protected:
  /// Runs the items due `seconds` after the start.
  std::string runAt(long seconds) {
    day.moveTo(seconds);
    // Each call runs at most one item, because its time is then over.
    for (std::size_t before = std::string::npos; before != ran.size();) {
      before = ran.size();
      queue.runQueue();
    }
    return std::exchange(ran, "");
  }

  MovedDay day;
  TimeQueue queue{"test", 2, false};
  std::string ran;
  Event a = [this] { ran += "a"; }, b = [this] { ran += "b"; }, c = [this] { ran += "c"; };
};

TEST_F(TimeQueueTest, RunsDueItemsByTimeThenByPosting) {
  const std::pair<long, Event*> events[] = {{2000, &c}, {1000, &a}, {2000, &a}, {1000, &b}, {LONG_MAX, &a}};
  for (const auto& [delay, event] : events) schedule(queue, delay, *event);
  EXPECT_EQ(runAt(0), "");
  EXPECT_EQ(runAt(1500), "ab");
  EXPECT_EQ(runAt(3000), "ca") << "no limit holds, whatever was passed";
  for (Event* event : {&a, &b}) schedule(queue, 0, *event);
  queue.runQueue(0);
  EXPECT_EQ(ran, "a") << "the time was over when it had run";
  queue.interrupt();
  EXPECT_THROW(queue.runQueue(-1), vesk::QueueInterrupted);
  EXPECT_EQ(runAt(3000), "ab");
}

TEST_F(TimeQueueTest, PeriodicEventsComeBackWhateverTheyThrow) {
  Event standard = [this] { throw std::runtime_error(ran += "a"); }, other = [this] { throw ran += "a"; };
  for (Event* work : {&a, &standard, &other}) {
    day.moveTo(0);
    schedule(queue, 1000, *work, true);
    EXPECT_EQ(runAt(1000), "a");
    EXPECT_EQ(runAt(1500), "");
    EXPECT_EQ(runAt(5000), "a") << "it never catches up";
    queue.pop_back();
  }
}

TEST_F(TimeQueueTest, EventsGoToTheDaemonsQueueAndReplaceTheirDuplicates) {
  EXPECT_FALSE(TimeQueue::postEvent("id", 0, runEvent, &a, true, false));
  vesk::RunQueue* daemon = TimeQueue::getTimeQueue(MAIN_RUN_QUEUE, true, 0);
  EXPECT_TRUE(TimeQueue::postEvent("id", 0, runEvent, &a, true, false));
  EXPECT_TRUE(TimeQueue::postEvent("id", 1000, runEvent, &b, true, false));
  EXPECT_TRUE(TimeQueue::postEvent(nullptr, 500, runEvent, &c, true, false));
  daemon->runQueue();
  EXPECT_EQ(ran, "") << "the timer starts from the new posting";
  day.moveTo(2000);
  for (int i = 0; i < 3; ++i) daemon->runQueue();
  EXPECT_EQ(ran, "cb");
}

/// An event that signals when a Thread has read its time.
struct Asked : TimedEvent {
  Asked(long delay, Event& event) : TimedEvent("", delay, runEvent, &event, false, false) {}
  long getTimeout() override {
    if (vesk::Thread::getSelf() != nullptr) askedByRunner.open();
    return TimedEvent::getTimeout();
  }
  Gate askedByRunner;
};

TEST(TimeQueueThreads, AnEarlierItemWakesASleepingRunner) {
  TimeQueue queue("threads", 0, false);
  MovedDay day;
  Gate started, late, early;
  Event start = [&] { started.open(); }, openLate = [&] { late.open(); }, openEarly = [&] { early.open(); };
  Worker runner([&] { queue.runQueue(20'000); });
  schedule(queue, 0, start);
  started.wait();
  const auto lateEvent = boost::make_shared<Asked>(10'000, openLate);
  queue.post(lateEvent);
  lateEvent->askedByRunner.wait(
      2);  // the second time to know how long to sleep: it does, once the lock is free
  schedule(queue, 0, openEarly);
  early.wait();
  day.moveTo(15'000);
  schedule(queue, 0, start);  // the last item: that also wakes the runner
  late.wait();
  started.wait(2);
  day.moveTo(30'000);
  schedule(queue, 500, openLate);
  runner.join();
  EXPECT_FALSE(queue.isEmpty()) << "what is not due stays when the runner's time is over";
}

TEST(TimeQueueThreads, NothingPeriodicComesBackAfterShutdown) {
  Gate started;
  Watched<TimeQueue> queue("ending", 0, false);
  Event runIntoTheEnd = [&] {
    started.open();
    queue.interrupted.wait();
  };
  Worker runner([&] { EXPECT_THROW(queue.runQueue(100'000), vesk::QueueInterrupted); });
  schedule(queue, 0, runIntoTheEnd, true);
  started.wait();
  queue.shutdown(runner);
  EXPECT_TRUE(queue.isEmpty());
  EXPECT_THROW(schedule(queue, 0, runIntoTheEnd), vesk::EndOfFileException);
}

TEST(TimeQueueThreads, ACancelIsNotSwallowedAsAnItemsException) {
  cancelAt([](auto point) {
    TimeQueue queue("cancelled", 0, false);
    Event work = [&] {
      point();
      vesk::Thread::yield();
    };
    schedule(queue, 0, work);
    queue.runQueue(100'000);
    ADD_FAILURE() << "the cancel was due";
  });
}

}  // namespace
