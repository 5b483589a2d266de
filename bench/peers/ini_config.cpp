// libini_config: the configuration file.

extern "C" {
#include <ini_configobj.h>
}

#include "bench/support/measure.h"
#include "bench/support/plain_socket.h"
#include "bench/support/sample_config.h"

int main() {
  using namespace bench;
  const SampleConfig config(SampleConfig::Ini);
  auto load = [&] {
    ini_cfgobj* object = nullptr;
    ini_cfgfile* file = nullptr;
    if (ini_config_create(&object) != 0 || ini_config_file_open(config.path().c_str(), 0, &file) != 0 ||
        ini_config_parse(file, INI_STOP_ON_ANY, INI_MV1S_OVERWRITE, INI_PARSE_NOWRAP, object) != 0)
      die("parse");
    int count = 0, error = 0;
    char** names = ini_get_attribute_list(object, SampleConfig::kSection, &count, &error);
    if (count != SampleConfig::kKeys) die("keys");
    ini_free_attribute_list(names);
    ini_config_file_destroy(file);
    ini_config_destroy(object);
  };
  print("libini_config.conf500", nanosecondsOf(load, 25, 11), "ns");
}
