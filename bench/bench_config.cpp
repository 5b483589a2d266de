// The configuration and the settings, by their number. (`compared` reads the file of 500 lines.)
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include <fokrazo/properties.h>
#include <fokrazo/setting.h>

using namespace vesk;

namespace {

constexpr int kKeys = 400;
const std::string kKey = "section.option.name240";
const char kFile[] = "/tmp/bench-config-XXXXXX";

/// Loads `state.range(0)` keys; the time per key shows whether the cost grows with the number.
void loadManyKeys(benchmark::State& state) {
  std::string path = kFile;
  const int fd = mkstemp(path.data());
  if (fd < 0) abort();
  close(fd);
  {
    std::ofstream file(path);
    for (int i = 0; i < state.range(0); i++)
      file << "key." << (i * 7919L) % state.range(0) << ": value " << i << '\n';
  }
  for (auto _ : state) {
    Properties properties;
    properties.load(path.c_str(), true);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
  remove(path.c_str());
}
BENCHMARK(loadManyKeys)->Arg(10)->Arg(1000)->Arg(100000);

/// Looks up one of `state.range(0)` keys.
void findAmongManyKeys(benchmark::State& state) {
  Properties properties;
  for (int i = 0; i < state.range(0); i++) properties.setString("key." + std::to_string(i), "value");
  const std::string key = "key." + std::to_string(state.range(0) / 2);
  for (auto _ : state) benchmark::DoNotOptimize(properties.getString(key));
}
BENCHMARK(findAmongManyKeys)->Arg(10)->Arg(1000)->Arg(100000);

/// Replaces the machine's data directory with one of `count` settings.
class Settings {
 public:
  explicit Settings(long count) {
    clearSettingsMap();
    if (!mkdtemp(m_dir.data())) abort();
    chgDataDir(m_dir + "/");
    for (long i = 0; i < count; i++) {
      m_names.push_back("bench" + std::to_string(i));
      std::ofstream(m_dir + "/kset." + m_names.back()) << "value " << i << '\n';
    }
  }
  ~Settings() {
    clearSettingsMap();
    std::filesystem::remove_all(m_dir);
  }
  const std::vector<std::string>& names() const { return m_names; }

 private:
  std::string m_dir = "/tmp/bench-settings-XXXXXX";
  std::vector<std::string> m_names;
};

/// Reads each setting for the first time, from its file; an item is one setting.
void readSettings(benchmark::State& state) {
  const Settings settings(state.range(0));
  for (auto _ : state) {
    clearSettingsMap();
    for (const std::string& name : settings.names()) benchmark::DoNotOptimize(loadSetting(name, true));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(readSettings)->Arg(10)->Arg(10000);

void findSettingInMemory(benchmark::State& state) {
  const Settings settings(state.range(0));
  for (const std::string& name : settings.names()) loadSetting(name, true);
  const std::string& name = settings.names()[state.range(0) / 2];
  for (auto _ : state) benchmark::DoNotOptimize(loadSetting(name, true));
}
BENCHMARK(findSettingInMemory)->Arg(10)->Arg(10000);

/// The lookups.
class Loaded : public benchmark::Fixture {
 public:
  void SetUp(benchmark::State&) override {
    for (int i = 0; i < kKeys; ++i) properties.setString("section.option.name" + std::to_string(i), "value");
    properties.setText("list", "one, two \"and three\"");
    properties.setText("time", "5m");
  }
  Properties properties;
};

BENCHMARK_F(Loaded, getString)(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(properties.getString(kKey));
}

BENCHMARK_F(Loaded, getTime)(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(properties.getTime("time", 's', 1));
}

BENCHMARK_F(Loaded, getCachedList)(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(properties.getValueList("list", ""));
}

void findInABareMap(benchmark::State& state) {
  std::map<std::string, std::string> map;
  for (int i = 0; i < kKeys; ++i) map["section.option.name" + std::to_string(i)] = "value";
  for (auto _ : state) {
    const std::string value = map.find(kKey)->second;
    benchmark::DoNotOptimize(value.data());
  }
}
BENCHMARK(findInABareMap);

}  // namespace

BENCHMARK_MAIN();
