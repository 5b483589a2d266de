// spdlog: a disabled message; lines of a file, flushed every ten messages or when its buffer is full; its
// background thread.

#include <spdlog/async.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include "bench/peers/log_threads.h"

namespace bench {
namespace {

constexpr char kPattern[] = "%Y-%m-%d %H:%M:%S.%e [%P:%t] %l %n %v";
constexpr char kText[] = "write size {}, waiting for the reply";
constexpr size_t kQueue = 8192;

template <class Factory = spdlog::synchronous_factory>
std::shared_ptr<spdlog::logger> loggerOf(const LogFolder& folder) {
  auto logger = spdlog::basic_logger_mt<Factory>("lrpc.ipcmessage", folder.path() + "/log", true);
  logger->set_pattern(kPattern);
  return logger;
}

void measureDisabled(const LogFolder& folder) {
  const auto logger = loggerOf(folder);
  logger->set_level(spdlog::level::info);
  int i = 0;
  print("spdlog.off", nanosecondsOf([&] {
          keep(&logger);
          logger->trace("write size {}", i++);
        }),
        "ns");
  spdlog::drop_all();
}

void measureFlushed(const LogFolder& folder, int threads) {
  constexpr int kFlush = 10;
  const auto logger = loggerOf(folder);
  auto log = [&](int call) {
    logger->info(kText, call);
    if (call % kFlush == kFlush - 1) logger->flush();
  };
  print("spdlog.flushed." + std::to_string(threads) + "t", timeOfLogCalls(threads, log), "ns");
  spdlog::drop_all();
}

void measureBuffered(const LogFolder& folder) {
  const auto logger = loggerOf(folder);
  print("spdlog.buffered", timeOfLogCalls(1, [&](int call) { logger->info(kText, call); }), "ns");
  spdlog::drop_all();
}

void measureAsynchronous(const LogFolder& folder) {
  spdlog::init_thread_pool(kQueue, 1);
  const auto logger = loggerOf<spdlog::async_factory>(folder);
  print("spdlog.async", timeOfLogCalls(1, [&](int call) { logger->info(kText, call); }), "ns");
  spdlog::drop_all();
  spdlog::shutdown();
}

}  // namespace
}  // namespace bench

int main() {
  const bench::LogFolder folder;
  bench::measureDisabled(folder);
  for (int threads : {1, 4}) bench::measureFlushed(folder, threads);
  bench::measureBuffered(folder);
  bench::measureAsynchronous(folder);
}
