#include "util/include/properties.h"

#include <zlib.h>

#include <atomic>
#include <list>
#include <regex>
#include <sstream>

#include "tests/support/world_test.h"
#include "tests/util/workers.h"
#include "util/include/fixed_paths.h"
#include "util/include/propnames.h"
#include "util/include/secure_open.h"
#include "util/include/selinux_context.h"
#include "util/include/setting.h"

using namespace testsupport;
using namespace vesk;

namespace {

using List = Properties::ValueList;

class PropertiesTest : public WorldTest {
 protected:
  /// Loads over what is there; everything stays logged.
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

  Properties properties;
};

TEST_F(PropertiesTest, LinesBecomeKeysAndValues) {
  const struct {
    const char* text;
    const char* key;
    const char* value;
  } rows[] = {
      {"k=v", "K", "v"},
      {"k v", "k", "v"},
      {"k:=v", "k", "v"},
      {"k = v", "k", "v"},
      {"k : v", "k", ": v"},
      {"k==v", "k", "=v"},
      {"  k:v", "k", "v"},
      {"k", "k", ""},
      {": v", "", "(none)"},
      {"! k: v", "k", "(none)"},
      {" # v", "#", "v"},
      {"my\\ key\\:\\=x: v", "my key:=x", "v"},
      {"a\\\\b\\c: v", "a\\b\\c", "v"},
      {"k: 1\nK: 2", "k", "2"},
      {"k: a\\\nb", "k", "a b"},
      {"k: a\\\\\nb: c", "k", "a\\"},
      {"k: a\\\\\\\n  b", "k", "a\\ b"},
      {"# c\\\nk: v", "k", "v"},
      {"k:   a    b   ", "k", "a b"},
      {"k: a \\ ", "k", "a  "},
      {"k: v\r\n", "k", "v"},
      {"k: \"a    b\"", "k", "a    b"},
      {"k: 'a \"  b'", "k", "a \"  b"},
      {"k: \"a\" \"b\"", "k", "\"a\" \"b\""},
      {"k: 'it\\'s'", "k", "it\\'s"},
      {"k: \"a\\\"b\\\\c\"", "k", "a\"b\\c"},
      {"k: \\\"a", "k", "\"a"},
      {"k: it's  a  b ", "k", "it's  a  b"},
      {"k: a\\tb\\\\tc\\\\\\td", "k", "a\tb\\tc\\\td"},
      {"k: 'a\\nb\\r\\v\\f'", "k", "a\nb\r\v\f"},
      {"k: a\\", "k", "a"},
  };
  for (const auto& row : rows) EXPECT_EQ(valueIn(row.text, row.key), row.value) << row.text;
}

TEST_F(PropertiesTest, VariablesComeFromSettingsThenTheEnvironmentThenTheFile) {
  setenv("CONFIG_TEST", "from environment", 1);
  setenv("CONFIG_TAIL", "x\\", 1);
  setenv("DOMAIN", "hidden by the setting", 1);
  clearSettingsMap();
  put("/var/velmora/kset.domain", "example.com");
  put("/var/velmora/kset.zonename", "x/OU=Zones,CN=Branch,DC=example");
  const struct {
    const char* text;
    const char* value;
    const char* kept;  // in rewriting mode
  } rows[] = {
      {"k: $DOMAIN/$ZONE/$SITE", "example.com/Branch/<unknown>", "$DOMAIN$/$ZONE$/$SITE$"},
      {"k: a${CONFIG_TEST}b", "a{CONFIG_TEST}b", "a$${CONFIG_TEST}b"},
      {"k: $CONFIG_TEST!", "from environment!", "$CONFIG_TEST$!"},
      {"a: \"x  y\"\nk: <$a>", "<x  y>", "<$a$>"},
      {"k: <$later>\nlater: x", "<>", "<$later$>"},
      {"k: '$DOMAIN'", "$DOMAIN", "$$DOMAIN"},
      {"k: \"$DOMAIN\"", "example.com", "$DOMAIN$"},
      {"k: \\$DOMAIN", "$DOMAIN", "$$DOMAIN"},
      {"k: $1abc", "abc", "$1$abc"},
      {"k: 5$", "5", "5$$"},
      {"a: '$a'\nk: $a$a", "$a$a", "$a$$a$"},
      {"k: $CONFIG_TAIL$DOMAIN", "x$DOMAIN", "$CONFIG_TAIL$$DOMAIN$"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(valueIn(row.text, "k"), row.value) << row.text;
    EXPECT_EQ(valueIn(row.text, "k", false), row.kept) << row.text;
  }
  unsetenv("DOMAIN");
  clearSettingsMap();
}

TEST_F(PropertiesTest, NumbersWordsAndTimesFallBack) {
  load("n: 12x\nbad: x\nempty:\nyes: YES\nno: 0\nmaybe: 2\n");
  const std::pair<const char*, int> numbers[] = {{"n", 12}, {"bad", 0}, {"empty", 5}, {"missing", 5}};
  for (const auto& [key, number] : numbers) EXPECT_EQ(properties.getInt(key, 5), number) << key;
  EXPECT_TRUE(properties.getBool("yes", false) && properties.getBool("maybe", true));
  EXPECT_FALSE(properties.getBool("no", true) || properties.getBool("empty", false));
  const struct {
    const char* value;
    char unit;
    long seconds;
    const char* message;
  } rows[] = {
      {"10", 'm', 600, ""},
      {"10s", 'm', 10, ""},
      {"2M", 's', 5256000, ""},
      {" 3w", 's', 1814400, ""},
      {"10x", 'm', 420, "Bad unit specification in property file: x"},
      {"10 s", 'm', 420, "Bad unit specification in property file:  "},
      {"-1h", 'm', -1, ""},
      {"-2", 'm', 420, "Negative time specification in property file for t is ignored.  Using default."},
      {"", 'm', 420, ""},
      {"soon", 'm', 420, ""},
      {"5", 'q', 0, "Bad unit specification in property file: q"},
      {"2147440447", 's', 7, ""},
      {"99999999999999999999y", 's', 2147483647L * 31536000, ""},
  };
  for (const auto& row : rows) {
    load(std::string("t: '") + row.value + "'");
    forgetLog();
    EXPECT_EQ(properties.getTime("t", row.unit, 7), row.seconds) << row.value;
    EXPECT_TRUE(isLogged(row.message)) << row.value;
    EXPECT_EQ(timesLogged("specification"), row.message[0] ? 1 : 0) << row.value;
  }
}

TEST_F(PropertiesTest, KeysAreFoundByPrefix) {
  load("Site.b: 1\nsite.A: 2\nsite: 3\nsite/x: 4\nsitez: 5");
  const auto map = properties.getMap("SITE.");
  ASSERT_TRUE(map);
  EXPECT_EQ(*map, (Properties::Map{{"site.A", "2"}, {"Site.b", "1"}}));
  EXPECT_FALSE(properties.getMap("sites"));
  EXPECT_EQ(properties.findPrefix("Site")->first, "Site.b");
  EXPECT_TRUE(properties.keyExists("Site.b"));
  EXPECT_FALSE(properties.keyExists("site.b"));
  EXPECT_EQ(Properties::makeKey("", "k", "s") + Properties::makeKey("p", "k", ""), "brondalt.k.sp.k");
}

TEST_F(PropertiesTest, EscapedTextReadsBack) {
  const struct {
    const char* value;
    bool keepDollar;
    const char* escaped;
  } rows[] = {
      {"a\tb\\", true, "a\\tb\\\\"}, {"a,b", true, "a\\,b"},   {"a, b\"", true, "\"a, b\\\"\""},
      {"$a", true, "\\$a"},          {"$a$b", false, "$a\\b"}, {"$$a", false, "\\$a"},
      {"$a$-$b$.", false, "$a-$b."}, {"it's", true, "it\\'s"}, {"", true, ""},
  };
  for (const auto& row : rows) EXPECT_EQ(Properties::escapeValue(row.value, row.keepDollar), row.escaped);
  EXPECT_EQ(Properties::valueListToString({"a,b", "c d"}, true, true, ';'), "a\\,b;\"c d\"");
  std::string line;
  EXPECT_TRUE(Properties::putPropertyToLine(line, "#k 1", "a b", true));
  EXPECT_EQ(line, " #k\\ 1: \"a b\"");
  EXPECT_FALSE(Properties::putPropertyToLine(line, "", "v", true));
  EXPECT_FALSE(properties.setString("", "v") || properties.setText("k", "v\\"));
}

TEST_F(PropertiesTest, ASecondLoadGoesOverTheFirstAndReloadStartsAfresh) {
  load("a: 1\nb: 1\nl: x, y");
  load("B: 2");
  EXPECT_EQ(properties.getString("a") + properties.getString("b"), "12");
  EXPECT_TRUE(list("l").empty());  // lists are cut from the last load
  configure("b: 3\n");
  EXPECT_TRUE(properties.reload());
  EXPECT_EQ(properties.getString("a") + properties.getString("b"), "3");
  std::filesystem::remove(paths::kConfigFile);
  forgetLog();
  EXPECT_FALSE(properties.reload());
  EXPECT_EQ(timesLogged("Unable to load property file: /etc/velmora/velmora.conf"), 1);
  EXPECT_EQ(properties.getInt("b", 7), 7);
}

TEST_F(PropertiesTest, WhatIsNoPlainFileIsReportedAndDefaultsAnswer) {
  ASSERT_EQ(mkdir(in("directory").c_str(), 0755) + mkfifo(in("pipe").c_str(), 0600), 0);
  for (const std::string& path : {in("missing"), in("directory"), in("pipe"), std::string("/dev/zero")}) {
    forgetLog();
    properties.load(path.c_str(), true);
    EXPECT_FALSE(properties.loaded());
    EXPECT_TRUE(properties.getBool("k", true));
    EXPECT_EQ(timesLogged("Unable to load property file: " + path + "\n"), 1);
  }
}

TEST_F(PropertiesTest, HugeAndHostileTextEndsSoon) {
  const size_t million = 1024 * 1024;
  std::string growing = "v0: xxxxxxxxxx\n";
  for (int i = 1; i < 20; i++) {
    growing += "v" + std::to_string(i) + ": ";
    for (int j = 0; j < 10; j++) growing += "$v" + std::to_string(i - 1);
    growing += '\n';
  }
  std::string deep = "k: ";
  for (size_t i = 0; i < million / 2; i++) deep += "\\\n";
  std::string rubbish;
  unsigned seed = 1;
  for (size_t i = 0; i < million; i++) rubbish += static_cast<char>((seed = seed * 1103515245 + 12345) >> 16);
  for (const std::string& text : {"k: " + std::string(million, 'x'), "k: " + std::string(million, '\\'),
                                  "k: " + std::string(million, '"'), "k: " + std::string(million, '$'),
                                  "k: \"" + std::string(million, ' '), growing, deep, rubbish}) {
    for (bool expand : {true, false}) {
      Properties hostile;
      std::istringstream stream(text);
      hostile.load(stream, expand);
      EXPECT_TRUE(hostile.loaded());
      EXPECT_LE(hostile.getString("v19").size(), 1u << 24);
      hostile.getValueList("k", "");
      put(in("conf"), text);
      EXPECT_EQ(hostile.saveProperty(in("conf")), 0);
    }
  }
}

TEST_F(PropertiesTest, ListsAreCutAtBlanksAndCommas) {
  const std::pair<const char*, List> rows[] = {
      {"a b,c , d", {"a", "b", "c", "d"}},
      {"a\\ b c\\,d", {"a b", "c,d"}},
      {"\"a, b\" 'c d'", {"a, b", "c d"}},
      {"x\"a b\"y z", {"x\"a b\"y", "z"}},
      {"'it\\'s' \"\"", {"it\\'s", ""}},
      {"a\\tb", {"a", "b"}},
      {"\"a b", {"\"a b"}},
      {", ,", {}},
  };
  for (const auto& [value, items] : rows) {
    load(std::string("l: ") + value);
    EXPECT_EQ(list("l"), items) << value;
  }
}

TEST_F(PropertiesTest, OnlyTheFilesOwnListIsShared) {
  load("l: a b\nempty:");
  const auto first = properties.getValueList("l", "");
  EXPECT_EQ(first, properties.getValueList("l", "other"));
  EXPECT_EQ(properties.getValueList("empty", ""), properties.getValueList("empty", ""));
  const auto fallback = properties.getValueList("missing", "x y");
  EXPECT_EQ(*fallback, (List{"x", "y"}));
  EXPECT_NE(fallback, properties.getValueList("missing", "x y"));
  EXPECT_TRUE(isLogged("Property list l: (a), (b), "));
  load("l: c");
  EXPECT_EQ(list("l"), List{"c"});
  EXPECT_EQ(*first, (List{"a", "b"}));
}

TEST_F(PropertiesTest, AFileOfItems) {
  put(in("items"), "# comment\n\n  ! comment\n one two \r\n\"a  b\"\nfile:" + in("items") + "\n'x' y");
  load("l: file:" + in("items"));
  EXPECT_EQ(list("l"), (List{"one two", "a  b", "file:" + in("items"), "'x' y"}));
  EXPECT_EQ(properties.getValueList("l", ""), properties.getValueList("l", ""));
  EXPECT_EQ(list("missing", "file:" + in("items")).size(), 4u);
  EXPECT_TRUE(isLogged("Opening config file [" + in("items") + "]."));
}

// Each row breaks the rules of those below it too, as far as a file can.
TEST_F(PropertiesTest, AnUnsafeFileOfItemsIsReportedInItsOwnWordsAndTheDefaultTakesOver) {
  for (const char* name : {"good", "writable", "linked"}) put(in(name), "item\n");
  for (const char* name : {"writable", "linked"}) ASSERT_EQ(chmod(in(name).c_str(), 0666), 0);
  std::filesystem::create_hard_link(in("linked"), in("linked2"));
  std::filesystem::create_symlink(in("linked"), in("symlink"));
  ASSERT_EQ(mkfifo(in("pipe").c_str(), 0600), 0);
  const std::string skip = ". Skip reading config file for property l. Please ensure the file ";
  const struct {
    const char* name;
    int status;
    const char* begin;
    std::string end;
  } rows[] = {
      {"missing", 1, "Config file [", "] does not exist.\n"},
      {"writable", 3, "Config file [",
       "] is world writable" + skip + "is not world writable to enhance security.\n"},
      {"symlink", 5, "Config file [", "] is symlink" + skip + "is not symlink\n"},
      {"linked", 6, "Config file [", "] has more than one hardlinks" + skip + "has only one hardlink\n"},
      {"pipe", 7, "Cannot open config file [",
       "] due to unknown error. Skip reading config file for property l.\n"},
      {"good/x", 7, "Cannot open config file [",
       "] due to unknown error. Skip reading config file for property l.\n"},
  };
  for (const auto& row : rows) {
    int status = -1;
    EXPECT_EQ(SecureOpenForReading(in(row.name).c_str(), &status), nullptr);
    EXPECT_EQ(status, row.status) << row.name;
    load("l: file:" + in(row.name));
    forgetLog();
    EXPECT_EQ(list("l", "a b"), (List{"a", "b"})) << row.name;
    EXPECT_EQ(timesLogged(row.begin + in(row.name) + row.end), 1) << logged();
  }
  // Once the file is mended it counts, as a refusal is not remembered.
  load("l: file:" + in("late"));
  EXPECT_TRUE(list("l").empty());
  put(in("late"), "item");
  EXPECT_EQ(list("l"), List{"item"});
  if (!canBeOrdinaryUser()) GTEST_SKIP() << "another user is needed for the rest";
  ASSERT_EQ(chown(in("writable").c_str(), kOrdinaryUser, 0) + chmod(in("good").c_str(), 0600), 0);
  int status = -1;
  EXPECT_EQ(SecureOpenForReading(in("writable").c_str(), &status), nullptr);
  EXPECT_EQ(status, 2);
  const auto openClosed = [&] {
    EXPECT_EQ(SecureOpenForReading(in("good").c_str(), &status), nullptr);
    EXPECT_EQ(status, 4);
  };
  checkInChild(openClosed, kOrdinaryUser);
}

TEST_F(PropertiesTest, ListsChangeInMemory) {
  load("l: b, a\ns: a b");
  EXPECT_TRUE(properties.addValueList("l", {"b"}, false));  // sorts
  EXPECT_EQ(properties.getString("l"), "a b");
  EXPECT_FALSE(properties.addValueList("s", {"b", "a"}, false));
  EXPECT_FALSE(properties.delValueList("s", {"A"}, false));
  EXPECT_TRUE(properties.delValueList("s", {"a", "x"}, false));
  EXPECT_EQ(properties.getString("s"), "b");
  properties.setValueList("new", {"x", "y"}, false);
  EXPECT_EQ(properties.getString("NEW"), "x y");
  EXPECT_TRUE(properties.modified());
  EXPECT_TRUE(properties.remove("l"));
  EXPECT_TRUE(list("l").empty());
}

// Also items that need quotes, in both modes, and after further changes.
TEST_F(PropertiesTest, AnyItemStaysWhatItIs) {
  const List items = {"a b", "", "$HOME", "it's", "\"q\"", "x,y", "back\\slash", "tab\there", "plain", "5$$"};
  for (bool expand : {true, false}) {
    load("", expand);
    properties.setValueList("l", items, true);
    put(in("conf"), "# l:\n");
    ASSERT_EQ(properties.saveProperty(in("conf")), 0);
    Properties read;
    read.load(in("conf").c_str(), true);
    EXPECT_EQ(*read.getValueList("l", ""), items) << get(in("conf"));
    EXPECT_FALSE(properties.delValueList("l", {"b"}, true));
    EXPECT_TRUE(properties.delValueList("l", {"$HOME"}, true));
    EXPECT_TRUE(properties.addValueList("l", {"$A", "c d"}, true));
    ASSERT_EQ(properties.saveProperty(in("conf")), 0);
    read.load(in("conf").c_str(), true);
    List expected = items;
    expected.remove("$HOME");
    expected.insert(expected.end(), {"$A", "c d"});
    expected.sort();
    EXPECT_EQ(*read.getValueList("l", ""), expected) << get(in("conf"));
  }
}

// Other programs' configuration files spell these keys: none may come, go or change by mistake.
TEST(PropertyNames, TheTableIsAsItWas) {
  std::ifstream source(TEST_SOURCE_DIR "/util/propnames.cpp");
  const std::string text{std::istreambuf_iterator<char>(source), {}};
  const std::regex row("(\\w+)(?: =|,)\\s+\"([^\"]*)\"");
  std::string rows;
  for (std::sregex_iterator match(text.begin(), text.end(), row), end; match != end; ++match)
    rows += match->str(1) + "=" + match->str(2) + "\n";
  EXPECT_EQ(std::count(rows.begin(), rows.end(), '\n'), 381);
  EXPECT_EQ(crc32(0, reinterpret_cast<const Bytef*>(rows.data()), static_cast<uInt>(rows.size())),
            0x7145db07u);
  EXPECT_EQ(PN::ROOT_MEMORY_NAME, PN::LOGGER_MEMORY_LOG_LEVEL);
  EXPECT_EQ(PN::NSS_USER_IGNORE, PN::IGNORE_USERS);
}

using PropertiesThreads = PropertiesTest;

TEST_F(PropertiesThreads, ReadersSeeTheOldFileOrTheNewOneWhole) {
  configure("pair.1: 0\npair.2: 0\n");
  Properties& shared = *Props(false, false);
  std::atomic<bool> ends{false};
  std::atomic<int> badReads{0};
  const auto read = [&] {
    while (!ends) {
      const auto map = shared.getMap("pair.");
      if (!map || map->size() != 2 || (*map)["pair.1"] != (*map)["pair.2"]) badReads++;
      if (shared.getValueList("pair.1", "")->size() != 1) badReads++;
    }
  };
  std::list<Worker> readers;
  for (int i = 0; i < 3; i++) readers.emplace_back(read);
  for (int i = 1; i < 200; i++) {
    const std::string number = std::to_string(i);
    configure("pair.1: " + number + "\npair.2: " + number + "\n");
    EXPECT_EQ(shared.getString("pair.1"), number);
  }
  ends = true;
  readers.clear();
  EXPECT_EQ(badReads, 0) << "one value never comes from two files";
}

// Each of the two takes the other's lock.
TEST_F(PropertiesThreads, SettingsAndTheConfigurationGoTogether) {
  const std::function<void(int)> works[] = {
      [](int i) { saveSetting("site", std::to_string(i), SETTING_PUBLIC, false, false); },
      [](int) { clearSettingsMap(); },
      [](int) { Props(false, true); },
      [](int) { GetSetting("missing", "none"); },
      [this](int) { RestoreFileSELinuxLabel(m_dir); },
  };
  std::list<Worker> threads;
  for (const auto& work : works)
    threads.emplace_back([&work] {
      for (int i = 0; i < 200; ++i) work(i);
    });
  threads.clear();
  clearSettingsMap();
  EXPECT_EQ(GetSetting("site", ""), "199");
}

}  // namespace
