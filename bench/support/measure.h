/// Measuring for `ratios` and `compared`. Not thread-safe.
#pragma once

#include <ctime>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace bench {

/// Nanoseconds of the monotonic clock.
inline uint64_t now() {
  timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return uint64_t{1'000'000'000} * time.tv_sec + time.tv_nsec;
}

/// Keeps the compiler from optimizing the value away.
template <class T>
void keep(const T& value) {
  asm volatile("" : : "r,m"(value) : "memory");
}

double median(std::vector<double> values);

/// Heap allocations of the process so far, in all libraries. Simultaneous ones may be counted once.
unsigned long allocationCount();
/// Allocations of at least kLargeAllocation bytes.
unsigned long largeAllocationCount();
constexpr size_t kLargeAllocation = 32 * 1024;

/// Heap allocations of one call, after a first call that is not counted.
template <class Work>
double allocationsOf(Work&& work, int calls = 100) {
  work();
  const unsigned long before = allocationCount();
  for (int i = 0; i < calls; ++i) work();
  return static_cast<double>(allocationCount() - before) / calls;
}

/// Repeats work long enough to time it, and computes the time of one call.
template <class Work>
class Timed {
 public:
  Timed(Work& work, double batchMs) : m_work(work) {
    constexpr double kLongEnough = 2e6;
    m_calls = 1;
    double total;
    while ((total = batch() * m_calls) < kLongEnough) m_calls *= 4;
    m_calls = std::max<uint64_t>(1, static_cast<uint64_t>(batchMs * 1e6 * m_calls / total));
  }
  /// Nanoseconds per call in one batch.
  double batch() {
    const uint64_t begin = now();
    for (uint64_t i = 0; i < m_calls; ++i) m_work();
    return static_cast<double>(now() - begin) / m_calls;
  }

 private:
  Work& m_work;
  uint64_t m_calls;
};

/// Nanoseconds of one call: the median of several batches, each of about `batchMs` milliseconds.
template <class Work>
double nanosecondsOf(Work&& work, double batchMs = 8, int batches = 15) {
  Timed<Work> timed(work, batchMs);
  std::vector<double> values;
  for (int i = 0; i < batches; ++i) values.push_back(timed.batch());
  return median(values);
}

/// Compares two times with alternating batches, so that other load affects both.
struct Comparison {
  double ours;   // nanoseconds, medians
  double other;  // nanoseconds, medians
  double ratio;  // the median of the batches' ratios
};

template <class Ours, class Other>
Comparison compare(Ours&& ours, Other&& other, double batchMs = 1, int batches = 201) {
  Timed<Ours> timedOurs(ours, batchMs);
  Timed<Other> timedOther(other, batchMs);
  std::vector<double> all[3];
  for (int i = 0; i < batches; ++i) {
    all[0].push_back(timedOurs.batch());
    all[1].push_back(timedOther.batch());
    all[2].push_back(all[0].back() / all[1].back());
  }
  return {median(all[0]), median(all[1]), median(all[2])};
}

/// Prints a measurement on a line of standard output: key, value and unit, separated by tabs.
void print(const std::string& key, double value, const char* unit);

/// Measures a piece of work and prints its time, and as `key.allocs` its heap allocations.
template <class Work>
void measure(const std::string& key, Work&& work) {
  print(key, nanosecondsOf(work), "ns");
  print(key + ".allocs", allocationsOf(work), "allocs");
}

}  // namespace bench
