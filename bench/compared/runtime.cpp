#include <atomic>
#include <thread>

#include <boost/make_shared.hpp>

#include <fokrazo/error_util.h>
#include <fokrazo/mutex.h>
#include <fokrazo/runqueue.h>
#include <fokrazo/thread.h>
#include "bench/compared/parts.h"
#include "bench/support/measure.h"

namespace bench {
namespace {

constexpr int kJobs = 200'000;
constexpr int kRuns = 7;

alignas(64) std::atomic<int> gDone{0};  // alone in its cache line

class Job : public vesk::QueueAble {
 public:
  void run() override { gDone.fetch_add(1, std::memory_order_relaxed); }
};

void* serve(void* queue) {
  try {
    static_cast<vesk::RunQueue*>(queue)->runQueue();
  } catch (const vesk::QueueInterrupted&) {
  }
  return nullptr;
}

double timeOfJob(vesk::RunQueue& queue) {
  gDone = 0;
  const uint64_t begin = now();
  for (int i = 0; i < kJobs; ++i) queue.post(boost::make_shared<Job>());
  while (gDone < kJobs) std::this_thread::yield();
  return static_cast<double>(now() - begin) / kJobs;
}

void measureQueue() {
  vesk::RunQueue queue("bench", 0, false);
  vesk::Thread worker;
  worker.start("worker", serve, &queue, 0);
  std::vector<double> times;
  for (int i = 0; i < kRuns; ++i) times.push_back(timeOfJob(queue));
  queue.shutdown(worker);
  print("ours.queue.job", median(times), "ns");
}

void measureLock() {
  vesk::Mutex mutex;
  print("ours.lock.idle", nanosecondsOf([&] { const vesk::Lock lock(mutex); }), "ns");
  std::atomic<int> threads{0};
  auto compare = [&] {
    keep(&threads);
    if (threads.load(std::memory_order_relaxed) != 0) mutex.lock();
  };
  print("ours.lock.compare_branch", nanosecondsOf(compare), "ns");
}

}  // namespace

void measureRuntime() {
  measureLock();
  measureQueue();
}

}  // namespace bench
