/// How the loggers among the peers are measured: as `compared` measures ours.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "bench/support/measure.h"
#include "bench/support/plain_socket.h"

namespace bench {

constexpr int kLogCalls = 60'000;  // per thread
constexpr int kLogRuns = 7;

/// Nanoseconds of one call, as each of several threads sees it. `log` takes the number of the call.
template <class Log>
double timeOfLogCalls(int threadCount, Log log) {
  std::vector<double> times;
  for (int run = 0; run < kLogRuns; ++run) {
    std::vector<std::thread> threads;
    const uint64_t begin = now();
    for (int i = 0; i < threadCount; ++i)
      threads.emplace_back([&] {
        for (int call = 0; call < kLogCalls; ++call) log(call);
      });
    for (std::thread& thread : threads) thread.join();
    times.push_back(static_cast<double>(now() - begin) / kLogCalls);
  }
  return median(times);
}

/// A folder of its own for log files. The destructor removes it.
class LogFolder {
 public:
  LogFolder() {
    if (!mkdtemp(m_path.data())) die("mkdtemp");
  }
  ~LogFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }
  const std::string& path() const { return m_path; }

 private:
  std::string m_path = std::filesystem::temp_directory_path() / "bench-XXXXXX";
};

}  // namespace bench
