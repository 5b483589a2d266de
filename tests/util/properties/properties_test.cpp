// The configuration file: reading and saving.

#include <sys/auxv.h>
#include <zlib.h>

#include <regex>

#include "tests/support/rows.h"
#include "tests/support/workers.h"
#include "tests/support/world_test.h"

using namespace testsupport;
using namespace vesk;

// C library comparisons as in a locale where no letter has another case: keys are compared without them.
extern "C" int strncasecmp(const char* a, const char* b, size_t size) noexcept {
  return strncmp(a, b, size);
}
extern "C" int strcasecmp(const char* a, const char* b) noexcept {
  return strcmp(a, b);
}

namespace {

using List = Properties::ValueList;

template <size_t N>
auto rows(const char* table) {
  return rowsOf<N>("util/properties/rows.txt", table);
}

// The items of a cell: each ends with a semicolon.
List itemsOf(const std::string& cell) {
  List items;
  std::istringstream text(cell);
  for (std::string item; std::getline(text, item, ';');) items.push_back(item);
  return items;
}

class PropertiesTest : public WorldTest {
 protected:
  /// Loads into the existing entries; everything stays logged.
  void load(const std::string& text, bool expand = true) {
    std::istringstream stream(text + "\nlog: TRACE\nlogger.destination: /var/log/test.log\n" +
                              "logger.file.flush.frequency: 1\n");
    properties.load(stream, expand);
    ASSERT_TRUE(properties.loaded());
  }
  List list(const std::string& key, const std::string& fallback = "") {
    return *properties.getValueList(key, fallback);
  }

  static std::string valueIn(const std::string& text, const std::string& key, bool expand = true) {
    Properties fresh;
    std::istringstream stream(text);
    fresh.load(stream, expand);
    std::string value = "(none)";
    fresh.lookup(key, value);
    return value;
  }

  static int timesLogged(const std::string& text) {
    const std::string log = logged();
    int count = 0;
    for (size_t at = 0; (at = log.find(text, at)) != std::string::npos; at++) count++;
    return count;
  }

  static std::string saved(const std::string& path, const std::function<void(Properties&)>& change = nullptr,
                           bool expand = false) {
    Properties file;
    file.load(path.c_str(), expand);
    if (change) change(file);
    EXPECT_EQ(file.saveProperty(path), 0);
    EXPECT_FALSE(file.modified());
    return get(path);
  }

  Properties properties;
};

TEST_F(PropertiesTest, LinesBecomeKeysAndValues) {
  for (const auto& [text, key, value] : rows<3>("lines: text, key, value"))
    EXPECT_EQ(valueIn(text, key), value) << text;
}

TEST_F(PropertiesTest, VariablesComeFromSettingsThenTheEnvironmentThenTheFile) {
  setenv("CONFIG_TEST", "from environment", 1);
  setenv("CONFIG_TAIL", "x\\", 1);
  setenv("DOMAIN", "hidden by the setting", 1);
  clearSettingsMap();
  put("/var/velmora/kset.domain", "example.com");
  put("/var/velmora/kset.zonename", "x/OU=Zones,CN=Branch,DC=example");
  for (const auto& [text, value, kept] : rows<3>("variables: text, value of k, value in rewriting mode")) {
    EXPECT_EQ(valueIn(text, "k"), value) << text;
    EXPECT_EQ(valueIn(text, "k", false), kept) << "in rewriting mode: " << text;
  }
  unsetenv("DOMAIN");
  clearSettingsMap();
}

// Run by the next test, in a copy of this program that is another user's and set-user-id.
TEST(SetUserProgram, DISABLED_IgnoresTheEnvironment) {
  if (getauxval(AT_SECURE) == 0) _exit(77);
  Properties properties;
  std::istringstream stream("k: <$CONFIG_TEST>");
  properties.load(stream, true);
  _exit(properties.getString("k") == "<>" ? 0 : 1);  // a leak check is not possible in such a program
}

TEST_F(PropertiesTest, TheEnvironmentOfASetUserProgramIsNotRead) {
  if (!canBeOrdinaryUser()) GTEST_SKIP() << "another user is needed";
  const std::string copy = in("set-user-program");
  std::filesystem::copy_file("/proc/self/exe", copy);
  ASSERT_EQ(chown(copy.c_str(), kOrdinaryUser, kOrdinaryUser) + chmod(copy.c_str(), 04755), 0);
  setenv("CONFIG_TEST", "from environment", 1);
  const int status = system((copy + " --gtest_also_run_disabled_tests --gtest_filter=SetUser*").c_str());
  if (WEXITSTATUS(status) == 77) GTEST_SKIP() << "this file system has no set-user-id programs";
  EXPECT_EQ(status, 0);
}

TEST_F(PropertiesTest, NumbersWordsAndTimesFallBack) {
  for (const auto& [value, kind, result, complaint] : rows<4>("lookups: value, kind, result, complaint")) {
    load("k:" + value);
    forgetLog();
    const long found = kind == "int"    ? properties.getInt("k", 5)
                       : kind == "bool" ? properties.getBool("k", false) + 2 * properties.getBool("k", true)
                                        : properties.getTime("k", kind[0], 7);
    EXPECT_EQ(std::to_string(found), result) << value;
    EXPECT_TRUE(isLogged(complaint)) << value;
    EXPECT_EQ(timesLogged("specification"), complaint.empty() ? 0 : 1) << value;
  }
  EXPECT_EQ(properties.getInt("missing", 5), 5);
}

TEST_F(PropertiesTest, KeysAreFoundByPrefix) {
  load("Site.b: 1\nsite.A: 2\nsite: 3\nsite/x: 4\nsitez: 5\nlist: a");
  list("LIST");
  properties.setValueList("List", {"b"}, true);
  EXPECT_EQ(list("LIST"), List{"b"}) << "the cache knows the key in any case";
  const auto map = properties.getMap("SITE.");
  ASSERT_TRUE(map);
  EXPECT_EQ(*map, (Properties::Map{{"site.A", "2"}, {"Site.b", "1"}}));
  EXPECT_FALSE(properties.getMap("sites"));
  EXPECT_EQ(properties.findPrefix("Site")->first, "Site.b");
  EXPECT_TRUE(properties.keyExists("Site.b") && !properties.keyExists("site.b"));
  EXPECT_EQ(Properties::makeKey("", "k", "s") + Properties::makeKey("p", "k", ""), "brondalt.k.sp.k");
}

TEST_F(PropertiesTest, EscapedTextIsOneLine) {
  EXPECT_EQ(Properties::escapeValue("a\tb\\", true) + Properties::escapeValue("$a$-$b$.", false),
            "a\\tb\\\\$a-$b.");
  EXPECT_EQ(Properties::valueListToString({"a,b", "c d"}, true, true, ';'), "a\\,b;\"c d\"");
  std::string line;
  EXPECT_FALSE(Properties::putPropertyToLine(line, "", "v", true));
  EXPECT_FALSE(properties.setString("", "v") || properties.setText("k", "v\\"));
}

TEST_F(PropertiesTest, ASecondLoadMergesAndReloadStartsOver) {
  load("a: 1\nb: 1\nl: x, y");
  load("B: 2");
  EXPECT_EQ(properties.getString("a") + properties.getString("b"), "12");
  EXPECT_TRUE(list("l").empty());  // lists come from the last load
  configure("b: 3\n");
  EXPECT_TRUE(properties.reload());
  EXPECT_EQ(properties.getString("a") + properties.getString("b"), "3");
  std::filesystem::remove(paths::kConfigFile);
  forgetLog();
  EXPECT_FALSE(properties.reload());
  EXPECT_EQ(timesLogged("Unable to load property file: /etc/velmora/velmora.conf"), 1);
  EXPECT_EQ(properties.getInt("b", 7), 7);
}

TEST_F(PropertiesTest, OnlyARegularFileIsLoaded) {
  ASSERT_EQ(mkfifo(in("pipe").c_str(), 0600), 0);
  for (const std::string& path : {m_dir, in("pipe"), std::string("/dev/zero")}) {
    forgetLog();
    properties.load(path.c_str(), true);
    EXPECT_FALSE(properties.loaded() || properties.getBool("k", false));
    EXPECT_EQ(timesLogged("Unable to load property file: " + path + "\n"), 1);
  }
}

TEST_F(PropertiesTest, HugeAndHostileTextIsBounded) {
  const size_t million = 1024 * 1024;
  std::string growing = "v0: xxxxxxxxxx\n", deep = "k: ";
  for (int i = 1; i < 20; i++) {
    const std::string before = "$v" + std::to_string(i - 1);
    growing += "v" + std::to_string(i) + ": " + before + before + before + before + before + '\n';
  }
  for (size_t i = 0; i < million / 2; i++) deep += "\\\n";
  for (const std::string& text :
       {"k: " + std::string(million, '\\'), "k: " + std::string(million, '"'),
        "k: " + std::string(million, '$'), "k: \"" + std::string(million, ' '), growing, deep}) {
    put(in("conf"), text);
    const auto check = [&text = text](Properties& hostile) {
      size_t total = 0;
      for (int i = 0; i < 20; i++) total += hostile.getString("v" + std::to_string(i)).size();
      EXPECT_LE(total, (1u << 24) + 2 * text.size()) << "all values together";
      hostile.getValueList("k", "");
    };
    for (const bool expand : {false, true}) saved(in("conf"), check, expand);
  }
}

TEST_F(PropertiesTest, ListsAreCutAtBlanksAndCommas) {
  for (const auto& [value, count, items] : rows<3>("lists: value, number of items, items")) {
    load("l: " + value);
    EXPECT_EQ(list("l"), itemsOf(items)) << value;
    EXPECT_EQ(std::to_string(list("l").size()), count) << value;
  }
}

TEST_F(PropertiesTest, ListsOfTheFileAreSharedAndDefaultsAreNot) {
  load("l: a b");
  const auto first = properties.getValueList("l", "");
  EXPECT_EQ(first, properties.getValueList("l", "other"));
  EXPECT_EQ(list("missing", "x y"), (List{"x", "y"}));
  EXPECT_NE(properties.getValueList("missing", "x y"), properties.getValueList("missing", "x y"));
  EXPECT_TRUE(isLogged("Property list l: (a), (b), "));
  load("l: c");
  EXPECT_EQ(list("l"), List{"c"});
  EXPECT_EQ(*first, (List{"a", "b"}));
}

TEST_F(PropertiesTest, AListMayBeAFileOfItems) {
  put(in("items"), "# comment\n\n  ! comment\n one two \r\n\"a  b\"\nfile:" + in("items") + "\n'x' y");
  load("l: file:" + in("items"));
  EXPECT_EQ(list("l"), (List{"one two", "a  b", "file:" + in("items"), "'x' y"}));
  EXPECT_EQ(list("missing", "file:" + in("items")).size(), 4u);
  EXPECT_TRUE(isLogged("Opening config file [" + in("items") + "]."));
}

// Each row also breaks the rules of the rows below it, as far as possible.
TEST_F(PropertiesTest, AnUnsafeFileOfItemsIsReportedAndTheDefaultTakesOver) {
  shell("echo item | tee writable > linked; chmod 666 writable linked; ln linked linked2");
  shell("ln -s linked symlink; mkfifo -m 600 pipe");
  int status = -1;
  for (const auto& [name, refusal, report] : rows<3>("unsafe files of items: name, status, report")) {
    EXPECT_EQ(SecureOpenForReading(in(name).c_str(), &status), nullptr);
    EXPECT_EQ(std::to_string(status), refusal) << name;
    load("l: file:" + in(name));
    forgetLog();
    EXPECT_EQ(list("l", "a b"), (List{"a", "b"})) << name;
    EXPECT_EQ(timesLogged(here(report)), 1) << logged();
  }
  put(in("missing"), "item");
  load("l: file:" + in("missing"));
  EXPECT_EQ(list("l"), List{"item"}) << "the refusal is not remembered";
  if (!canBeOrdinaryUser()) GTEST_SKIP() << "another user is needed for the rest";
  ASSERT_EQ(chown(in("writable").c_str(), kOrdinaryUser, 0) + chmod(in("missing").c_str(), 0600), 0);
  EXPECT_EQ(SecureOpenForReading(in("writable").c_str(), &status), nullptr);
  EXPECT_EQ(status, 2);
  const auto openClosed = [&] {
    EXPECT_EQ(SecureOpenForReading(in("missing").c_str(), &status), nullptr);
    EXPECT_EQ(status, 4);
  };
  checkInChild(openClosed, kOrdinaryUser);
}

TEST_F(PropertiesTest, ListsChangeInMemory) {
  load("l: b, a\ns: a b");
  EXPECT_TRUE(properties.addValueList("l", {"b"}, false));  // sorts
  EXPECT_FALSE(properties.addValueList("s", {"b", "a"}, false));
  EXPECT_FALSE(properties.delValueList("s", {"A"}, false));
  EXPECT_TRUE(properties.delValueList("s", {"a", "x"}, false) && properties.modified());
  EXPECT_EQ(properties.getString("l") + "|" + properties.getString("s"), "a b|b");
  EXPECT_EQ(list("L"), (List{"a", "b"}));
  EXPECT_TRUE(properties.remove("l"));
  EXPECT_TRUE(list("L").empty());
}

// Other programs' configuration files use these keys, so none may change by mistake.
TEST(PropertyNames, KeysNeverChange) {
  std::ifstream source(TEST_SOURCE_DIR "/util/properties/propnames.cpp");
  const std::string text{std::istreambuf_iterator<char>(source), {}};
  const std::regex row("(\\w+)(?: =|,)\\s+\"([^\"]*)\"");
  std::string rows;
  for (std::sregex_iterator match(text.begin(), text.end(), row), end; match != end; ++match)
    rows += match->str(1) + "=" + match->str(2) + "\n";
  EXPECT_EQ(crc32(0, reinterpret_cast<const Bytef*>(rows.data()), static_cast<uInt>(rows.size())),
            0x0652989bu);
}

using PropertiesThreads = PropertiesTest;

TEST_F(PropertiesThreads, ReadersSeeTheOldOrTheNewFile) {
  const auto set = [](const std::string& number) {
    configure("pair.1: " + number + "\npair.2: " + number + "\n");
  };
  set("0");
  Properties& shared = *Props(false, false);
  std::atomic<bool> ends{false};
  std::atomic<int> badReads{0};
  std::list<Worker> readers;
  for (int i = 0; i < 3; i++)
    readers.emplace_back([&] {
      while (!ends) {
        const auto map = shared.getMap("pair.");
        if (!map || map->size() != 2 || (*map)["pair.1"] != (*map)["pair.2"]) badReads++;
        if (shared.getValueList("pair.1", "")->size() != 1) badReads++;
      }
    });
  for (int i = 1; i < 200; i++) {
    set(std::to_string(i));
    EXPECT_EQ(shared.getInt("pair.1", 0), i);
  }
  ends = true;
  readers.clear();
  EXPECT_EQ(badReads, 0);
}

class PropertiesSaveTest : public PropertiesTest {
 protected:
  void SetUp() override {
    PropertiesTest::SetUp();
    m_path = in("conf");
    for (const auto& [line] : rows<1>("hand-written file")) m_handWritten += line;
  }
  std::string m_path, m_handWritten;
};

TEST_F(PropertiesSaveTest, WithNoChangeTheFileComesBack) {
  std::string large;
  for (int i = 0; i < 10000; i++)
    large += (i % 7 ? "key" + std::to_string(i) + " =  value " + std::to_string(i) : "# line") + "\n";
  for (const std::string& text :
       {m_handWritten, m_handWritten + "\n", large, std::string("\n"), std::string()}) {
    put(m_path, text);
    put(m_path + ".new", std::string(300'000, 'x'));  // left by a killed writer
    EXPECT_EQ(saved(m_path), text);
  }
  EXPECT_EQ(modeOf(m_path) & 07777, 0644u);
  EXPECT_FALSE(std::filesystem::exists(m_path + ".lock") || std::filesystem::exists(m_path + ".new"));
}

TEST_F(PropertiesSaveTest, OneChangeChangesOneLine) {
  for (const auto& [key, value, from, to] : rows<4>("changes: key, value, lines before, lines after")) {
    put(m_path, m_handWritten);
    const auto change = [&k = key, &v = value](Properties& p) { EXPECT_TRUE(p.setString(k, v)); };
    const std::string result = saved(m_path, change);
    std::string expected = m_handWritten;
    EXPECT_EQ(result, expected.replace(expected.find(from), from.size(), to)) << key;
    EXPECT_EQ(saved(m_path), result) << key;
  }
}

// A change of meaning is saved even if lookups return the same value.
TEST_F(PropertiesSaveTest, ChangesOfMeaningAreSavedAndLinesComeAndGo) {
  for (const auto& [before, change, after] : rows<3>("saves: file, change, file after")) {
    const std::string kind = change.substr(0, change.find(' ')),
                      value = change.substr(kind.size() + (kind != change));
    const auto apply = [&](Properties& file) {
      if (kind == "items" || kind == "variables") file.setValueList("k", itemsOf(value), kind == "items");
      if (kind == "add") file.addValueList("k", itemsOf(value), true);
      if (kind == "text" || kind == "expand") file.setText("k", value);
      if (kind == "string") file.setString("k", value);
      if (kind == "remove") file.remove("k");
    };
    put(m_path, before);
    EXPECT_EQ(saved(m_path, apply, kind == "expand" || kind == "add"), after) << before;
    EXPECT_EQ(saved(m_path), after) << before;
    Properties read;
    read.load(m_path.c_str(), true);
    EXPECT_TRUE((kind != "items" && kind != "add") || *read.getValueList("k", "") == itemsOf(value))
        << before;
  }
}

TEST_F(PropertiesSaveTest, AFileThatCannotBeWrittenStaysAsItWas) {
  Properties& properties = *Props(false, false);
  shell("echo 'a: 1' > other; mkdir other.new");
  for (const auto& [name, text] : rows<2>("failing saves: file, report")) {
    EXPECT_EQ(properties.saveProperty(in(name)), -1);
    EXPECT_TRUE(isLogged("Unable to " + here(text) + "\n")) << logged();
  }
  EXPECT_TRUE(std::filesystem::exists(in("conf.lock")));
  EXPECT_FALSE(std::filesystem::exists(in("conf.new")));
  shell("rmdir other.new; rm other.lock");
  properties.setValueList("", {"x"}, true);
  EXPECT_EQ(properties.saveProperty(in("other")), -1);
  EXPECT_FALSE(std::filesystem::exists(in("other.new")));
  EXPECT_TRUE(properties.remove(""));
  EXPECT_EQ(get(in("other")), "a: 1\n");
}

TEST_F(PropertiesSaveTest, AFreshLockIsWaitedForAndAStaleOneTaken) {
  RecordedPauses pauses;
  put(m_path, "a: 1\n");
  put(m_path + ".lock", "");
  Properties properties;
  properties.load(m_path.c_str(), false);
  properties.setString("a", "2");
  MovedDay day(59);
  EXPECT_EQ(properties.saveProperty(m_path), -1);
  EXPECT_EQ(pauses.taken(), std::vector<long>(100, 10));
  EXPECT_EQ(get(m_path), "a: 1\n");
  day.moveTo(62);
  EXPECT_EQ(properties.saveProperty(m_path), 0);
  EXPECT_EQ(pauses.taken().size(), 100u);
  EXPECT_EQ(get(m_path), "a: 2\n");
}

TEST_F(PropertiesSaveTest, ConcurrentUpdatesAreAllKept) {
  put(m_path, "# counter\ncount: 0\n");
  const auto increment = [](Properties& p) {
    return p.setString("count", std::to_string(p.getInt("count", 0) + 1));
  };
  pid_t writers[4];
  for (pid_t& writer : writers) {
    writer = fork();
    if (writer != 0) continue;
    for (int done = 0; done < 10;) done += Properties::update(m_path, increment) == 0;
    _exit(0);
  }
  for (pid_t writer : writers) waitpid(writer, nullptr, 0);
  EXPECT_EQ(get(m_path), "# counter\ncount: 40\n");
  EXPECT_EQ(Properties::update(m_path, [](Properties&) { return false; }), 0);
  EXPECT_EQ(Properties::update(in("missing"), [](Properties&) { return true; }), -1);
  EXPECT_FALSE(std::filesystem::exists(in("missing.lock")));
}

}  // namespace
