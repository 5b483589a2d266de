#include "util/include/timequeue.h"

#include <limits>
#include <stdexcept>
#include <string>

#include <boost/make_shared.hpp>

#include "tests/util/workers.h"
#include "util/include/error_util.h"

using vesk::TimedEvent;
using vesk::TimeQueue;

namespace {

/// What an event does: notes its letter, and throws if it is told to.
struct Note {
  std::string* ran;
  const char* what;
  enum { Return, ThrowStandard, ThrowOther } end = Return;
};

void takeNote(void* argument) {
  const Note& note = *static_cast<Note*>(argument);
  *note.ran += note.what;
  if (note.end == Note::ThrowStandard) throw std::runtime_error("standard");
  if (note.end == Note::ThrowOther) throw 1;
}

void openGate(void* gate) {
  static_cast<Gate*>(gate)->open();
}

void post(TimeQueue& queue, long delay, void (*function)(void*), void* argument, bool periodic = false) {
  queue.post(boost::make_shared<TimedEvent>("", delay, function, argument, false, periodic));
}

}  // namespace

/// One thread alone, and a day that the tests move.
class TimeQueueTest : public testing::Test {
 protected:
  void postNote(long delay, Note& note, bool periodic = false) {
    post(queue, delay, takeNote, &note, periodic);
  }

  /// What runs when the day has come to `seconds` after the start.
  std::string runAt(long seconds) {
    day.moveTo(seconds);
    // One item at most for each call: the time is over when it has run.
    for (std::size_t before = std::string::npos; before != ran.size();) {
      before = ran.size();
      queue.runQueue();
    }
    return std::exchange(ran, "");
  }

  MovedDay day;
  TimeQueue queue{"test", 2, false};
  std::string ran;
  Note a{&ran, "a"}, b{&ran, "b"}, c{&ran, "c"}, d{&ran, "d"};
};

TEST_F(TimeQueueTest, RunsWhatIsDueInOrderOfTimeThenOfPosting) {
  postNote(2000, c);
  postNote(1000, a);
  postNote(2000, d);
  postNote(1000, b);
  postNote(std::numeric_limits<long>::max(), a);
  EXPECT_EQ(runAt(0), "");
  EXPECT_EQ(runAt(1500), "ab");
  EXPECT_EQ(runAt(3000), "cd") << "no limit holds, whatever was passed";
  postNote(0, a);
  postNote(0, b);
  queue.runQueue(0);
  EXPECT_EQ(ran, "a") << "the time was over when it had run";
  queue.interrupt();
  EXPECT_THROW(queue.runQueue(-1), vesk::QueueInterrupted);
  EXPECT_EQ(runAt(3000), "ab");
}

TEST_F(TimeQueueTest, PeriodicEventsComeBackWhateverTheyThrow) {
  for (auto end : {Note::Return, Note::ThrowStandard, Note::ThrowOther}) {
    day.moveTo(0);
    a.end = end;
    postNote(1000, a, true);
    EXPECT_EQ(runAt(1000), "a");
    EXPECT_EQ(runAt(1500), "");
    EXPECT_EQ(runAt(5000), "a") << "it never catches up";
    queue.pop_back();
  }
}

TEST_F(TimeQueueTest, EventsGoToTheDaemonsQueueAndReplaceTheirDuplicates) {
  EXPECT_FALSE(TimeQueue::postEvent("id", 0, takeNote, &a, true, false));
  vesk::RunQueue* daemon = TimeQueue::getTimeQueue(MAIN_RUN_QUEUE, true, 0);
  EXPECT_TRUE(TimeQueue::postEvent("id", 0, takeNote, &a, true, false));
  EXPECT_TRUE(TimeQueue::postEvent("id", 1000, takeNote, &b, true, false));
  EXPECT_TRUE(TimeQueue::postEvent(nullptr, 500, takeNote, &c, true, false));
  daemon->runQueue();
  EXPECT_EQ(ran, "") << "the timer starts from the new posting";
  day.moveTo(2000);
  for (int i = 0; i < 3; ++i) daemon->runQueue();
  EXPECT_EQ(ran, "cb");
}

TEST(TimeQueueThreads, AnEarlierItemWakesASleepingRunner) {
  TimeQueue queue("threads", 0, false);
  MovedDay day;
  Gate started, late, early;
  Worker runner([&] { queue.runQueue(20'000); });
  post(queue, 0, openGate, &started);
  started.wait();
  post(queue, 10'000, openGate, &late);
  post(queue, 0, openGate, &early);
  early.wait();
  day.moveTo(15'000);
  post(queue, 0, openGate, &started);  // the last in line: that wakes the runner, too
  late.wait();
  started.wait(2);
  day.moveTo(30'000);
  post(queue, 500, openGate, &late);
  runner.join();
  EXPECT_FALSE(queue.isEmpty()) << "what is not due stays when the runner's time is over";
}

TEST(TimeQueueThreads, NothingPeriodicComesBackAfterShutdown) {
  static Gate started;
  Watched<TimeQueue> queue("ending", 0, false);
  const auto runIntoTheEnd = [](void* watched) {
    started.open();
    static_cast<Watched<TimeQueue>*>(watched)->interrupted.wait();
  };
  Worker runner([&] { EXPECT_THROW(queue.runQueue(100'000), vesk::QueueInterrupted); });
  post(queue, 0, runIntoTheEnd, &queue, true);
  started.wait();
  queue.shutdown(runner);
  EXPECT_TRUE(queue.isEmpty());
  EXPECT_THROW(post(queue, 0, openGate, nullptr), vesk::EndOfFileException);
}

TEST(TimeQueueThreads, ACancelIsNotSwallowedAsAnItemsException) {
  cancelAt([](auto point) {
    TimeQueue queue("cancelled", 0, false);
    auto item = [&] {
      point();
      vesk::Thread::yield();
    };
    post(
        queue, 0, [](void* function) { (*static_cast<decltype(item)*>(function))(); }, &item);
    queue.runQueue(100'000);
    ADD_FAILURE() << "the cancel was due";
  });
}
