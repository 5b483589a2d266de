#include "bench/support/measure.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace {

using Counter = std::atomic<unsigned long>;

// In their own cache line, to avoid false sharing.
struct alignas(64) Counters {
  Counter all{0};
  Counter large{0};
};

Counters gAllocations;

// An atomic increment would cost more than the allocation.
void increment(Counter& counter) {
  counter.store(counter.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
}

void countAllocation(size_t size) {
  increment(gAllocations.all);
  if (size >= bench::kLargeAllocation) increment(gAllocations.large);
}

}  // namespace

// Replace the C library's functions in the whole process.
extern "C" {
void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void* __libc_realloc(void*, size_t);

void* malloc(size_t size) noexcept {
  countAllocation(size);
  return __libc_malloc(size);
}
void* calloc(size_t count, size_t size) noexcept {
  countAllocation(count * size);
  return __libc_calloc(count, size);
}
void* realloc(void* memory, size_t size) noexcept {
  countAllocation(size);
  return __libc_realloc(memory, size);
}
}

namespace bench {

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const size_t half = values.size() / 2;
  if (values.empty()) return 0;
  return values.size() % 2 ? values[half] : (values[half - 1] + values[half]) / 2;
}

unsigned long allocationCount() {
  return gAllocations.all.load(std::memory_order_relaxed);
}

unsigned long largeAllocationCount() {
  return gAllocations.large.load(std::memory_order_relaxed);
}

void print(const std::string& key, double value, const char* unit) {
  printf("%s\t%.4g\t%s\n", key.c_str(), value, unit);
  fflush(stdout);
}

}  // namespace bench
