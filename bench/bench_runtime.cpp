// Locks, queues and starting processes, each compared with the underlying plain call.
#include <benchmark/benchmark.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include <boost/make_shared.hpp>

#include <fokrazo/error_util.h>
#include <fokrazo/mutex.h>
#include <fokrazo/osport.h>
#include <fokrazo/runqueue.h>
#include <fokrazo/thread.h>
#include "util/process/descriptors.h"

namespace {

void emptyLoop(benchmark::State& state) {
  vesk::Mutex mutex;
  for (auto _ : state) benchmark::DoNotOptimize(&mutex);
}
BENCHMARK(emptyLoop);

void lockWithoutThreads(benchmark::State& state) {
  vesk::Mutex mutex;
  for (auto _ : state) vesk::Lock lock(mutex);
}
BENCHMARK(lockWithoutThreads);

void lockWithThreads(benchmark::State& state) {
  const vesk::Thread threaded;
  vesk::Mutex mutex;
  for (auto _ : state) vesk::Lock lock(mutex);
}
BENCHMARK(lockWithThreads);

void pthreadMutexAlone(benchmark::State& state) {
  pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
  for (auto _ : state) {
    pthread_mutex_lock(&mutex);
    pthread_mutex_unlock(&mutex);
  }
}
BENCHMARK(pthreadMutexAlone);

void stdRecursiveMutex(benchmark::State& state) {
  std::recursive_mutex mutex;
  for (auto _ : state) std::lock_guard<std::recursive_mutex> lock(mutex);
}
BENCHMARK(stdRecursiveMutex);

constexpr int kPosts = 10'000;

std::atomic<int> gRuns{0};
std::atomic<int> gRunnersLeft{0};

class Count : public vesk::QueueAble {
 public:
  void run() override { gRuns.fetch_add(1, std::memory_order_relaxed); }
};

void awaitAndReset(std::atomic<int>& count, int goal) {
  while (count < goal) std::this_thread::yield();
  count = 0;
}

void* serve(void* queue) {
  try {
    static_cast<vesk::RunQueue*>(queue)->runQueue();
  } catch (const vesk::QueueInterrupted&) {
    ++gRunnersLeft;
  }
  return nullptr;
}

void postsThroughARunQueue(benchmark::State& state) {
  vesk::RunQueue queue("bench", 0, false);
  std::vector<vesk::Thread> runners(state.range(0));
  for (auto& runner : runners) runner.start("runner", serve, &queue, 0);
  for (auto _ : state) {
    for (int i = 0; i < kPosts; ++i) queue.post(boost::make_shared<Count>());
    awaitAndReset(gRuns, kPosts);
  }
  state.SetItemsProcessed(state.iterations() * kPosts);
  for (std::size_t i = 0; i < runners.size(); ++i) {
    queue.interrupt();
    awaitAndReset(gRunnersLeft, 1);
  }
  for (auto& runner : runners) runner.join();
}
BENCHMARK(postsThroughARunQueue)->Arg(1)->Arg(4)->UseRealTime();

/// A mutex with the features of a queue's lock: recursive, and its holder is not cancelled.
class GuardedMutex {
 public:
  GuardedMutex() {
    pthread_mutexattr_t recursive;
    pthread_mutexattr_init(&recursive);
    pthread_mutexattr_settype(&recursive, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(&m_mutex, &recursive);
    pthread_mutexattr_destroy(&recursive);
  }
  void lock() {
    int before;
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before);
    pthread_mutex_lock(&m_mutex);
  }
  void unlock() {
    int before;
    pthread_mutex_unlock(&m_mutex);
    pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, &before);
    pthread_testcancel();
  }
  pthread_mutex_t* native_handle() { return &m_mutex; }

 private:
  pthread_mutex_t m_mutex;
};

/// The simplest code for the same work.
template <class Mutex>
class PlainQueue {
 public:
  void post(boost::shared_ptr<vesk::QueueAble> item) {
    const std::lock_guard<Mutex> lock(m_mutex);
    m_items.push_back(std::move(item));
    if (m_waiting) pthread_cond_broadcast(&m_posted);
    m_waiting = false;
  }
  /// Runs until it gets an empty item.
  void serve() {
    while (const auto item = next()) item->run();
  }

 private:
  boost::shared_ptr<vesk::QueueAble> next() {
    const std::lock_guard<Mutex> lock(m_mutex);
    while (m_items.empty()) {
      m_waiting = true;
      pthread_cond_wait(&m_posted, m_mutex.native_handle());
    }
    auto item = std::move(m_items.front());
    m_items.pop_front();
    return item;
  }

  Mutex m_mutex;
  pthread_cond_t m_posted = PTHREAD_COND_INITIALIZER;
  bool m_waiting = false;  // since the last wake-up
  std::deque<boost::shared_ptr<vesk::QueueAble>> m_items;
};

template <class Mutex>
void postsThroughAPlainQueue(benchmark::State& state) {
  PlainQueue<Mutex> queue;
  std::vector<std::thread> runners;
  for (int i = 0; i < state.range(0); ++i) runners.emplace_back([&] { queue.serve(); });
  for (auto _ : state) {
    for (int i = 0; i < kPosts; ++i) queue.post(boost::make_shared<Count>());
    awaitAndReset(gRuns, kPosts);
  }
  state.SetItemsProcessed(state.iterations() * kPosts);
  for (std::size_t i = 0; i < runners.size(); ++i) queue.post({});
  for (auto& runner : runners) runner.join();
}
BENCHMARK_TEMPLATE(postsThroughAPlainQueue, GuardedMutex)->Arg(1)->Arg(4)->UseRealTime();
BENCHMARK_TEMPLATE(postsThroughAPlainQueue, std::mutex)->Arg(1)->Arg(4)->UseRealTime();

/// Starts a child that keeps one descriptor and closes all others, with a given limit of descriptors.
void spawnUnderALimit(benchmark::State& state) {
  rlimit before;
  getrlimit(RLIMIT_NOFILE, &before);
  const rlim_t wanted = state.range(0);
  const rlimit raised{wanted, std::max(wanted, before.rlim_max)};
  if (setrlimit(RLIMIT_NOFILE, &raised) != 0) return state.SkipWithError("only root may raise the limit");
  int input = 0;
  char name[] = "true";
  char* argv[] = {name, nullptr};
  for (auto _ : state) spawnfv(0, 1, &input, "/bin/true", argv);
  setrlimit(RLIMIT_NOFILE, &before);
}
BENCHMARK(spawnUnderALimit)->Arg(1024)->Arg(1'000'000)->UseRealTime();

/// Three ways to close the others: the kernel's range call, its listing, and one by one.
void closeAMillion(benchmark::State& state) {
  using namespace vesk::descriptors;
  const int kept = 0;
  for (auto _ : state) {
    const pid_t child = fork();
    if (child == 0) {
      if (state.range(0) == 0) closeByRange(&kept, 1);
      if (state.range(0) == 1) closeByListing(&kept, 1);
      if (state.range(0) == 2) closeOneByOne(&kept, 1, 1'000'000);
      _exit(0);
    }
    waitpid(child, nullptr, 0);
  }
}
BENCHMARK(closeAMillion)->DenseRange(0, 2)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
