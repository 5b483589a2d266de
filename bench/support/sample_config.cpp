#include "bench/support/sample_config.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "bench/support/plain_socket.h"

namespace bench {

SampleConfig::SampleConfig(Syntax syntax) : m_path(std::filesystem::temp_directory_path() / "bench-XXXXXX") {
  const int fd = mkstemp(m_path.data());
  if (fd < 0) die("mkstemp");
  close(fd);
  std::ofstream file(m_path);
  if (syntax == Ini) file << '[' << kSection << "]\n";
  for (int i = 0; i < kLines; ++i) {
    if (i % 5 == 4)
      file << "# comment line " << i << " explains the next key\n";
    else
      file << "section" << i / 25 << ".option.name" << i << (syntax == Ini ? " = " : ": ") << "value number "
           << i << " /var/lib/x\n";
  }
}

SampleConfig::~SampleConfig() {
  unlink(m_path.c_str());
}

}  // namespace bench
