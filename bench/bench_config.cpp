// Reading the configuration file, compared with alternatives: 500 lines, 400 of them with a key.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include <boost/property_tree/ini_parser.hpp>
#include <boost/property_tree/ptree.hpp>

#include <fokrazo/properties.h>
#include <fokrazo/setting.h>

using namespace vesk;

namespace {

constexpr int kLines = 500;

/// The same keys as a properties file and as an INI file; both are removed at the end.
class Files {
 public:
  Files() : m_dir("/tmp/bench-config-XXXXXX") {
    if (!mkdtemp(&m_dir[0])) abort();
    std::ofstream plain(properties());
    std::ofstream ini(iniFile());
    ini << "[main]\n";
    for (int i = 0; i < kLines; i++) writeLine(plain, ini, i);
  }
  ~Files() {
    remove(properties().c_str());
    remove(iniFile().c_str());
    remove(m_dir.c_str());
  }
  std::string properties() const { return m_dir + "/plain.conf"; }
  std::string iniFile() const { return m_dir + "/plain.ini"; }

 private:
  static void writeLine(std::ostream& plain, std::ostream& ini, int i) {
    const std::string number = std::to_string(i);
    if (i % 5 == 4) {
      plain << "# comment line " << number << " explains the next key\n";
      ini << "; comment line " << number << " explains the next key\n";
      return;
    }
    const std::string key = "section" + std::to_string(i / 25) + ".option.name" + number;
    const std::string value = "value number " + number + " /var/lib/x";
    plain << key << ": " << value << '\n';
    ini << key << " = " << value << '\n';
  }

  std::string m_dir;
};

const Files& files() {
  static const Files files;
  return files;
}

const std::string kKey = "section9.option.name240";

std::map<std::string, std::string> readByHand(const std::string& path) {
  std::map<std::string, std::string> map;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    const size_t colon = line.find(':');
    if (colon == std::string::npos) continue;
    map[line.substr(0, colon)] = line.substr(line.find_first_not_of(' ', colon + 1));
  }
  return map;
}

void loadProperties(benchmark::State& state) {
  const std::string path = files().properties();
  for (auto _ : state) {
    Properties properties;
    properties.load(path.c_str(), true);
    benchmark::DoNotOptimize(properties.loaded());
  }
  state.SetItemsProcessed(state.iterations() * kLines);
}
BENCHMARK(loadProperties);

void loadByGetlineIntoAMap(benchmark::State& state) {
  const std::string path = files().properties();
  for (auto _ : state) benchmark::DoNotOptimize(readByHand(path).size());
  state.SetItemsProcessed(state.iterations() * kLines);
}
BENCHMARK(loadByGetlineIntoAMap);

void loadByBoostPropertyTree(benchmark::State& state) {
  const std::string path = files().iniFile();
  for (auto _ : state) {
    boost::property_tree::ptree tree;
    boost::property_tree::read_ini(path, tree);
    benchmark::DoNotOptimize(tree.size());
  }
  state.SetItemsProcessed(state.iterations() * kLines);
}
BENCHMARK(loadByBoostPropertyTree);

/// Loads `state.range(0)` keys; the time per key shows whether the cost grows with the number.
void loadManyKeys(benchmark::State& state) {
  const std::string path = files().properties() + ".many";
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

/// A loaded file, for the lookups.
class Loaded : public benchmark::Fixture {
 public:
  void SetUp(benchmark::State&) override {
    properties.load(files().properties().c_str(), true);
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
  const auto map = readByHand(files().properties());
  for (auto _ : state) {
    const std::string value = map.find(kKey)->second;
    benchmark::DoNotOptimize(value.data());
  }
}
BENCHMARK(findInABareMap);

}  // namespace

BENCHMARK_MAIN();
