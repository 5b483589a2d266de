// Replaces libFuzzer: runs every file of the given directories once.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include "fuzz/fuzz_input.h"

namespace fs = std::filesystem;

namespace {

void tryFile(const fs::path& path) {
  printf("%s\n", path.filename().c_str());
  fflush(stdout);
  std::ifstream file(path, std::ios::binary);
  const std::string content{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(content.data()), content.size());
}

}  // namespace

int main(int argc, char** argv) {
  std::set<fs::path> paths;
  for (int i = 1; i < argc; ++i)
    for (const fs::directory_entry& entry : fs::directory_iterator(argv[i])) paths.insert(entry.path());
  for (const fs::path& path : paths) tryFile(path);
  printf("%zu inputs\n", paths.size());
  return paths.empty() ? 1 : 0;
}
