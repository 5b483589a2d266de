// What a log call costs its caller: disabled, to the file, and through the background thread, with one and
// with four threads. Allocations are counted per message.

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdlib>
#include <string>

#include <fokrazo/log.h>
#include <fokrazo/log_destination.h>
#include <fokrazo/properties.h>
#include <fokrazo/propnames.h>
#include <fokrazo/thread.h>

namespace {

std::atomic<long> gAllocations{0};

}  // namespace

// Replace the C library's functions, to count all allocations.
extern "C" void* __libc_malloc(size_t size);
extern "C" void* malloc(size_t size) noexcept {
  gAllocations.fetch_add(1, std::memory_order_relaxed);
  return __libc_malloc(size);
}

namespace {

using vesk::Logger;

constexpr int kMessages = 40000;  // per thread and run
constexpr int kMessagesPerFlush = 10;
constexpr int kQueueSize = 1 << 19;  // twice the messages of a run: a half full queue slows down its posters

std::string logFile(const char* name) {
  const char* directory = getenv("TMPDIR");
  return std::string(directory ? directory : "/tmp") + "/bench_logging." + name + ".log";
}

// Counts allocations over the run; the first thread of the benchmark reports.
class AllocationCounter {
 public:
  explicit AllocationCounter(benchmark::State& state) : m_state(state), m_before(gAllocations) {}
  ~AllocationCounter() {
    if (m_state.thread_index() != 0) return;
    const double messages = static_cast<double>(m_state.iterations()) * m_state.threads();
    m_state.counters["allocations"] = static_cast<double>(gAllocations - m_before) / messages;
  }

 private:
  benchmark::State& m_state;
  long m_before;
};

void DisabledHere(benchmark::State& state) {
  const auto logger = vesk::getLogger("bench", false);
  const AllocationCounter counter(state);
  long i = 0;
  for (auto _ : state) VESK_LOG(logger, Trace, "message %ld of %s", ++i, "bench");
}
BENCHMARK(DisabledHere);

// By name, through the thread's table.
void DisabledByNameHere(benchmark::State& state) {
  const vesk::Thread counted;
  vesk::getLogger("lrpc.session", false);
  const AllocationCounter counter(state);
  long i = 0;
  for (auto _ : state) VESK_LOG_TO("lrpc.session", Trace, "message %ld of %s", ++i, "bench");
}
BENCHMARK(DisabledByNameHere);

/// A tree of `state.range(0)` loggers, three levels deep. It never shrinks.
std::string loggerName(long number) {
  return "tree.branch" + std::to_string(number / 100) + ".leaf" + std::to_string(number);
}
void growTree(const benchmark::State& state) {
  for (long i = 0; i < state.range(0); ++i) Logger::GetLogger(loggerName(i));
}

void FindLogger(benchmark::State& state) {
  const std::string name = loggerName(state.range(0) / 2);
  for (auto _ : state) benchmark::DoNotOptimize(Logger::GetLogger(name).get());
}

// Reconfigures every logger; the items are loggers.
void ConfigureLoggers(benchmark::State& state) {
  for (auto _ : state) Logger::ReconfigureLevels(*vesk::Props(false, false));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(FindLogger)->Arg(10)->Setup(growTree);
BENCHMARK(ConfigureLoggers)->Arg(10)->Setup(growTree);
BENCHMARK(FindLogger)->Arg(10000)->Setup(growTree);
BENCHMARK(ConfigureLoggers)->Arg(10000)->Setup(growTree);

void openFile(const benchmark::State&) {
  vesk::Properties& properties = *vesk::Props(false, false);
  properties.setString(vesk::PN::LOGGER_DESTINATION, logFile("here"));
  properties.setString(vesk::PN::LOGGER_FILE_FLUSH_FREQUENCY, std::to_string(kMessagesPerFlush));
  properties.setString(vesk::PN::LOGGER_QUEUE_SIZE, std::to_string(kQueueSize));
  vesk::Thread::SetThreadsActive(true);
  Logger::ReconfigureLevels(properties);
}
void removeFile(const benchmark::State&) {
  vesk::Thread::SetThreadsActive(false);
  remove(logFile("here").c_str());
}
void openQueue(const benchmark::State& state) {
  openFile(state);
  Logger::startThread({});
}
void closeQueue(const benchmark::State& state) {
  Logger::stopThread({});
  removeFile(state);
}

void EnabledHere(benchmark::State& state) {
  const auto logger = vesk::getLogger("bench", false);
  const AllocationCounter counter(state);
  long i = 0;
  for (auto _ : state) VESK_LOG(logger, Info, "message %ld of %s", ++i, "bench");
}
BENCHMARK(EnabledHere)
    ->Name("FileHere")
    ->Threads(1)
    ->Threads(4)
    ->Iterations(kMessages)
    ->UseRealTime()
    ->Setup(openFile)
    ->Teardown(removeFile);
BENCHMARK(EnabledHere)
    ->Name("QueueHere")
    ->Threads(1)
    ->Threads(4)
    ->Iterations(kMessages)
    ->UseRealTime()
    ->Setup(openQueue)
    ->Teardown(closeQueue);

}  // namespace

BENCHMARK_MAIN();
