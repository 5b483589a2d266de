#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <fokrazo/properties.h>
#include "bench/compared/parts.h"
#include "bench/support/measure.h"
#include "bench/support/plain_socket.h"

namespace bench {
namespace {

constexpr int kLines = 500;  // every fifth is a comment

void writeConfig(const std::string& path) {
  std::ofstream file(path);
  for (int i = 0; i < kLines; ++i) {
    if (i % 5 == 4)
      file << "# comment line " << i << " explains the next key\n";
    else
      file << "section" << i / 25 << ".option.name" << i << ": value number " << i << " /var/lib/x\n";
  }
}

}  // namespace

void measureConfig() {
  std::string path = std::filesystem::temp_directory_path() / "bench-XXXXXX";
  const int fd = mkstemp(path.data());
  if (fd < 0) die("mkstemp");
  close(fd);
  writeConfig(path);
  auto load = [&] {
    vesk::Properties properties;
    properties.load(path.c_str(), true);
    if (!properties.loaded()) die("load");
  };
  print("ours.conf500", nanosecondsOf(load, 25, 11) / 1000, "us/500 lines");
  print("ours.conf500.allocs", allocationsOf(load), "allocs");
  unlink(path.c_str());
}

}  // namespace bench
