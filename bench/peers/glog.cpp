// glog: a line of a buffered file.

#include <glog/logging.h>

#include "bench/peers/log_threads.h"

int main(int, char** argv) {
  constexpr int kSeconds = 30;
  const bench::LogFolder folder;
  FLAGS_log_dir = folder.path();
  FLAGS_logtostderr = false;
  FLAGS_stderrthreshold = google::NUM_SEVERITIES;
  FLAGS_logbuflevel = google::GLOG_INFO;
  FLAGS_logbufsecs = kSeconds;
  google::InitGoogleLogging(argv[0]);
  auto log = [](int call) { LOG(INFO) << "write size " << call << ", waiting for the reply"; };
  bench::print("glog.buffered", bench::timeOfLogCalls(1, log), "ns");
}
