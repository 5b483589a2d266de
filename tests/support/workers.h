/// Threads and meeting points for the tests of the runtime, which also control the library's clock and
/// pauses.
#pragma once

#include <fokrazo/thread.h>
#include "util/thread/clock.h"
#include "util/thread/pause.h"

/// wait() blocks until open() has been called as often as it asks for; after a minute it ends the program.
class Gate {
 public:
  void open() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    ++m_openings;
    m_changed.notify_all();
  }
  void wait(int openings = 1) {
    std::unique_lock<std::mutex> guard(m_mutex);
    if (!m_changed.wait_for(guard, std::chrono::minutes(1), [&] { return m_openings >= openings; })) abort();
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  int m_openings = 0;
};

/// A thread that runs `body`. The destructor joins it.
class Worker : public vesk::Thread {
 public:
  explicit Worker(std::function<void()> body) : m_body(std::move(body)) { start("worker", run, this, 0); }
  ~Worker() override { join(); }
  void unexpectedTermination() override { ++unexpectedEnds; }

  std::atomic<int> unexpectedEnds{0};

 private:
  static void* run(void* worker) { return static_cast<Worker*>(worker)->m_body(), nullptr; }

  std::function<void()> m_body;
};

/// Runs `body(point)` in a thread that is cancelled inside point(), and waits for its end. (After a cancel
/// inside a blocking system call the thread sanitizer loses track of locks, so keep those out of point().)
inline void cancelAt(const std::function<void(const std::function<void()>& point)>& body) {
  Gate reached, cancelled;
  Worker worker([&] {
    body([&] {
      reached.open();
      cancelled.wait();
    });
  });
  reached.wait();
  worker.cancel();
  cancelled.open();
  worker.join();
  EXPECT_EQ(worker.unexpectedEnds, 1);
}

/// A queue that reports its interrupts.
template <class Queue>
struct Watched : Queue {
  using Queue::Queue;
  void interrupt() override {
    Queue::interrupt();
    interrupted.open();
  }
  Gate interrupted;
};

/// Shifts the library's clock during a scope.
struct MovedDay {
  explicit MovedDay(long seconds = 0) { moveTo(seconds); }
  ~MovedDay() { moveTo(0); }
  void moveTo(long seconds) { vesk::dayclock::offset = seconds; }
};

/// Records the library's pauses instead of sleeping, during a scope. One object at a time.
class RecordedPauses {
 public:
  explicit RecordedPauses(std::function<void(long)> during = [](long) {}) : m_during(std::move(during)) {
    gCurrent = this;
    vesk::pause::replacement = [](long milliseconds) { gCurrent->note(milliseconds); };
  }
  ~RecordedPauses() { vesk::pause::replacement = nullptr; }

  std::vector<long> taken() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_taken;
  }

 private:
  void note(long milliseconds) {
    {
      const std::lock_guard<std::mutex> guard(m_mutex);
      m_taken.push_back(milliseconds);
    }
    m_during(milliseconds);
  }

  static inline RecordedPauses* gCurrent;
  std::mutex m_mutex;
  std::vector<long> m_taken;
  std::function<void(long)> m_during;
};
