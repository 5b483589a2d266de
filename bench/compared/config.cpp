#include <fokrazo/properties.h>
#include "bench/compared/parts.h"
#include "bench/support/measure.h"
#include "bench/support/plain_socket.h"
#include "bench/support/sample_config.h"

namespace bench {

void measureConfig() {
  const SampleConfig config(SampleConfig::Plain);
  auto load = [&] {
    vesk::Properties properties;
    properties.load(config.path().c_str(), true);
    if (!properties.loaded()) die("load");
  };
  print("ours.conf500", nanosecondsOf(load, 25, 11) / 1000, "us");
  print("ours.conf500.allocs", allocationsOf(load), "allocs");
}

}  // namespace bench
