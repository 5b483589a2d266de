// Boost: the property tree, and a thread pool of Asio with one thread.

#include <atomic>
#include <thread>

#include <boost/asio/post.hpp>
#include <boost/asio/thread_pool.hpp>
#include <boost/property_tree/ini_parser.hpp>
#include <boost/property_tree/ptree.hpp>

#include "bench/support/measure.h"
#include "bench/support/plain_socket.h"
#include "bench/support/sample_config.h"

namespace bench {
namespace {

constexpr int kJobs = 200'000;
constexpr int kRuns = 7;

double timeOfJob(boost::asio::thread_pool& pool) {
  std::atomic<int> done{0};
  const uint64_t begin = now();
  for (int i = 0; i < kJobs; ++i)
    boost::asio::post(pool, [&] { done.fetch_add(1, std::memory_order_relaxed); });
  while (done < kJobs) std::this_thread::yield();
  return static_cast<double>(now() - begin) / kJobs;
}

}  // namespace
}  // namespace bench

int main() {
  using namespace bench;
  const SampleConfig config(SampleConfig::Ini);
  auto load = [&] {
    boost::property_tree::ptree tree;
    boost::property_tree::read_ini(config.path(), tree);
    if (tree.front().second.size() != SampleConfig::kKeys) die("keys");
  };
  print("boost.conf500", nanosecondsOf(load, 25, 11), "ns");

  std::vector<double> times;
  for (int i = 0; i < kRuns; ++i) {
    boost::asio::thread_pool pool(1);
    times.push_back(timeOfJob(pool));
    pool.join();
  }
  print("asio.job", median(times), "ns");
}
