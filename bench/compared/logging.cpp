#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <thread>

#include <fokrazo/log.h>
#include <fokrazo/properties.h>
#include <fokrazo/propnames.h>
#include <fokrazo/thread.h>
#include "bench/compared/parts.h"
#include "bench/support/measure.h"
#include "bench/support/plain_socket.h"

namespace bench {
namespace {

using vesk::Logger;

constexpr int kCalls = 60'000;  // per thread
constexpr int kRuns = 7;
constexpr char kLargestCache[] = "512";   // messages between flushes
constexpr char kAmpleQueue[] = "200000";  // a half full queue slows down its posters

/// Sends the log to its own file during the object's lifetime.
class LogFile {
 public:
  explicit LogFile(const std::string& flushFrequency) {
    const int fd = mkstemp(m_path.data());
    if (fd < 0) die("mkstemp");
    close(fd);
    set(m_path, flushFrequency);
  }
  ~LogFile() {
    set("syslog", "");
    unlink(m_path.c_str());
  }

 private:
  static void set(const std::string& destination, const std::string& flushFrequency) {
    vesk::Properties& properties = *vesk::Props(false, false);
    properties.setString(vesk::PN::LOGGER_DESTINATION, destination);
    properties.setString(vesk::PN::LOGGER_FILE_FLUSH_FREQUENCY, flushFrequency);
    Logger::ReconfigureLevels(properties);
  }

  std::string m_path = std::filesystem::temp_directory_path() / "bench-XXXXXX";
};

void logCalls(Logger& logger) {
  for (int i = 0; i < kCalls; ++i) VESK_LOG(&logger, Info, "write size %d, waiting for the reply", i);
}

/// Nanoseconds per call in each of several threads.
double timeOfCalls(int threadCount) {
  const auto logger = vesk::getLogger("lrpc.ipcmessage", false);
  std::vector<std::thread> threads;
  const uint64_t begin = now();
  for (int i = 0; i < threadCount; ++i) threads.emplace_back([&] { logCalls(*logger); });
  for (std::thread& thread : threads) thread.join();
  return static_cast<double>(now() - begin) / kCalls;
}

void measureFile(const std::string& key, const std::string& flushFrequency, int threadCount) {
  const LogFile file(flushFrequency);
  std::vector<double> times;
  for (int i = 0; i < kRuns; ++i) times.push_back(timeOfCalls(threadCount));
  print(key, median(times), "ns");
}

void measureQueued() {
  vesk::Props(false, false)->setString(vesk::PN::LOGGER_QUEUE_SIZE, kAmpleQueue);
  const LogFile file("");
  std::vector<double> times;
  for (int i = 0; i < kRuns; ++i) {
    Logger::startThread({});
    times.push_back(timeOfCalls(1));
    Logger::stopThread({});
  }
  print("ours.log.queue", median(times), "ns");
}

void measureDisabled() {
  const auto logger = vesk::getLogger("lrpc.ipcmessage", false);
  int i = 0;
  auto held = [&] {
    keep(&logger);
    VESK_LOG(logger, Trace, "write size %d", i++);
  };
  print("ours.log.off", nanosecondsOf(held), "ns");
  print("ours.log.off.allocs", allocationsOf(held), "allocs");
  auto named = [&] { VESK_LOG_TO("lrpc.ipcmessage", Trace, "write size %d", i++); };
  print("ours.log.off.by_name", nanosecondsOf(named), "ns");
  print("ours.log.off.by_name.allocs", allocationsOf(named), "allocs");
}

}  // namespace

void measureLogging() {
  measureDisabled();
  const vesk::Thread threaded;  // makes the library take its locks
  for (int threads : {1, 4}) measureFile("ours.log.file." + std::to_string(threads) + "t", "", threads);
  measureFile("ours.log.cache", kLargestCache, 1);
  measureQueued();
}

}  // namespace bench
