// The least code for what has no peer: two comparisons behind a call, a dictionary of short texts, a file
// into a map.

#include <fstream>
#include <map>
#include <unordered_map>

#include "bench/support/measure.h"
#include "bench/support/plain_socket.h"
#include "bench/support/sample_config.h"

namespace bench {
namespace {

struct Level {
  int own;
  const int* inherited;
};

__attribute__((noinline)) bool isEnabled(const Level& level, int wanted) {
  asm volatile("");
  return level.own >= 0 ? wanted <= level.own : wanted <= *level.inherited;
}

void measureDisabled() {
  const int root = 4;
  const Level level{-1, &root};
  constexpr int kTrace = 6;
  int logged = 0;
  print("floor.off", nanosecondsOf([&] {
          keep(&level);
          if (isEnabled(level, kTrace)) ++logged;
        }),
        "ns");
  if (logged != 0) die("level");
}

// All fit into a std::string without an allocation.
std::vector<std::string> shortTexts() {
  constexpr int kTexts = 398;
  std::vector<std::string> texts;
  for (int i = 0; i < kTexts; ++i) texts.push_back("_attribute" + std::to_string(i));
  return texts;
}

void measureDictionary() {
  const std::vector<std::string> texts = shortTexts();
  print("floor.dict", nanosecondsOf([&] {
          const std::vector<std::string> list(texts.begin(), texts.end());
          std::unordered_map<std::string, int> indexes;
          indexes.reserve(list.size());
          for (size_t i = 0; i < list.size(); ++i) indexes.emplace(list[i], i);
          keep(&indexes);
        }),
        "ns");
}

void measureConfig() {
  const SampleConfig config(SampleConfig::Plain);
  print("floor.conf500",
        nanosecondsOf(
            [&] {
              std::map<std::string, std::string> properties;
              std::ifstream file(config.path());
              for (std::string line; std::getline(file, line);) {
                if (line.empty() || line[0] == '#') continue;
                const size_t colon = line.find(':');
                if (colon == std::string::npos) continue;
                properties[line.substr(0, colon)] = line.substr(line.find_first_not_of(' ', colon + 1));
              }
              if (properties.size() != SampleConfig::kKeys) die("keys");
            },
            25, 11),
        "ns");
}

}  // namespace
}  // namespace bench

int main() {
  bench::measureDisabled();
  bench::measureDictionary();
  bench::measureConfig();
}
