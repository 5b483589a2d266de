#include "util/include/properties.h"

#include <sys/stat.h>

#include <atomic>
#include <sstream>

#include "tests/support/world_test.h"
#include "util/include/fixed_paths.h"
#include "util/include/setting.h"
#include "util/include/thread.h"

using namespace testsupport;
using namespace vesk;

namespace {

class PropertiesTest : public WorldTest {
 protected:
  /// Fills `properties`; everything stays logged.
  static void load(Properties& properties, const std::string& text, bool expand = true) {
    std::istringstream stream(text + "\nlog: TRACE\nlogger.destination: /var/log/test.log\n" +
                              "logger.file.flush.frequency: 1\n");
    properties.load(stream, expand);
    ASSERT_TRUE(properties.loaded());
  }

  static std::string valueIn(const std::string& text, const std::string& key, bool expand = true) {
    Properties properties;
    load(properties, text, expand);
    std::string value = "(none)";
    properties.lookup(key, value);
    return value;
  }

  static int timesLogged(const std::string& text) {
    const std::string log = logged();
    int count = 0;
    for (size_t at = 0; (at = log.find(text, at)) != std::string::npos; at++) count++;
    return count;
  }
};

TEST_F(PropertiesTest, LinesBecomeKeysAndValues) {
  const struct {
    const char* text;
    const char* key;
    const char* value;
  } rows[] = {
      {"k: v", "k", "v"},
      {"k=v", "K", "v"},
      {"k v", "k", "v"},
      {"k:=v", "k", "v"},
      {"k =v", "k", "v"},
      {"k = v", "k", "v"},
      {"k : v", "k", ": v"},
      {"k==v", "k", "=v"},
      {"  k:v", "k", "v"},
      {"k", "k", ""},
      {"k:", "k", ""},
      {": v", "", "(none)"},
      {"# k: v", "k", "(none)"},
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
  for (const auto& row : rows) {
    Properties properties;
    std::istringstream stream(row.text);
    properties.load(stream, true);
    std::string value = "(none)";
    properties.lookup(row.key, value);
    EXPECT_EQ(value, row.value) << row.text;
  }
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

TEST_F(PropertiesTest, NumbersAndWordsFallBack) {
  Properties properties;
  load(properties, "n: 12x\nbad: x\nempty:\nyes: YES\nno: 0\nmaybe: 2\n");
  EXPECT_EQ(properties.getInt("n", 5), 12);
  EXPECT_EQ(properties.getInt("bad", 5), 0);
  EXPECT_EQ(properties.getInt("empty", 5), 5);
  EXPECT_EQ(properties.getInt("missing", 5), 5);
  EXPECT_TRUE(properties.getBool("yes", false));
  EXPECT_FALSE(properties.getBool("no", true));
  EXPECT_TRUE(properties.getBool("maybe", true));
  EXPECT_FALSE(properties.getBool("empty", false));
}

TEST_F(PropertiesTest, TimesHaveUnits) {
  const struct {
    const char* value;
    char unit;
    long seconds;
    const char* message;
  } rows[] = {
      {"10", 'm', 600, ""},
      {"10s", 'm', 10, ""},
      {"2M", 's', 5256000, ""},
      {"1y", 's', 31536000, ""},
      {" 3w", 's', 1814400, ""},
      {"10x", 'm', 420, "Bad unit specification in property file: x"},
      {"10 s", 'm', 420, "Bad unit specification in property file:  "},
      {"-1", 'm', -1, ""},
      {"-1h", 'm', -1, ""},
      {"-2", 'm', 420, "Negative time specification in property file for t is ignored.  Using default."},
      {"", 'm', 420, ""},
      {"soon", 'm', 420, ""},
      {"5", 'q', 0, "Bad unit specification in property file: q"},
      {"2147440447", 's', 7, ""},
      {"99999999999999999999y", 's', 2147483647L * 31536000, ""},
  };
  for (const auto& row : rows) {
    Properties properties;
    load(properties, std::string("t: '") + row.value + "'");
    forgetLog();
    EXPECT_EQ(properties.getTime("t", row.unit, 7), row.seconds) << row.value;
    EXPECT_NE(logged().find(row.message), std::string::npos) << row.value;
    EXPECT_EQ(timesLogged("specification"), row.message[0] ? 1 : 0) << row.value;
  }
}

TEST_F(PropertiesTest, KeysAreFoundByPrefix) {
  Properties properties;
  load(properties, "Site.b: 1\nsite.A: 2\nsite: 3\nsite/x: 4\nsitez: 5");
  const auto map = properties.getMap("SITE.");
  ASSERT_TRUE(map);
  EXPECT_EQ(*map, (Properties::Map{{"site.A", "2"}, {"Site.b", "1"}}));
  EXPECT_FALSE(properties.getMap("sites"));
  EXPECT_EQ(properties.findPrefix("Site")->first, "Site.b");
  EXPECT_TRUE(properties.keyExists("Site.b"));
  EXPECT_FALSE(properties.keyExists("site.b"));
  EXPECT_EQ(properties.getString("site.B"), "1");
  EXPECT_EQ(Properties::makeKey("", "k", "s"), "brondalt.k.s");
  EXPECT_EQ(Properties::makeKey("p", "k", ""), "p.k");
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
}

TEST_F(PropertiesTest, ASecondLoadGoesOverTheFirstAndReloadStartsAfresh) {
  Properties properties;
  load(properties, "a: 1\nb: 1\nl: x, y");
  load(properties, "B: 2");
  EXPECT_EQ(properties.getString("a"), "1");
  EXPECT_EQ(properties.getString("b"), "2");
  EXPECT_TRUE(properties.getValueList("l", "")->empty());  // lists are cut from the last load
  configure("b: 3\n");
  EXPECT_TRUE(properties.reload());
  EXPECT_EQ(properties.getString("a"), "");
  EXPECT_EQ(properties.getString("b"), "3");
  std::filesystem::remove(paths::kConfigFile);
  forgetLog();
  EXPECT_FALSE(properties.reload());
  EXPECT_EQ(timesLogged("Unable to load property file: /etc/velmora/velmora.conf"), 1);
  EXPECT_EQ(properties.getInt("b", 7), 7);
}

TEST_F(PropertiesTest, WhatIsNoPlainFileIsReportedAndDefaultsAnswer) {
  std::filesystem::create_directory(in("directory"));
  ASSERT_EQ(mkfifo(in("pipe").c_str(), 0600), 0);
  for (const std::string& path : {in("missing"), in("directory"), in("pipe"), std::string("/dev/zero")}) {
    Properties properties;
    forgetLog();
    properties.load(path.c_str(), true);
    EXPECT_FALSE(properties.loaded());
    EXPECT_EQ(properties.getBool("k", true), true);
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
      Properties properties;
      std::istringstream stream(text);
      properties.load(stream, expand);
      EXPECT_TRUE(properties.loaded());
      EXPECT_LE(properties.getString("v19").size(), 1u << 24);
      properties.getValueList("k", "");
      put(in("conf"), text);
      EXPECT_EQ(properties.saveProperty(in("conf")), 0);
    }
  }
}

class Reader : public Thread {
 public:
  explicit Reader(Properties& properties) : m_properties(properties) { start("reader", run, this, 0); }
  int badReads() {
    join();
    return m_bad;
  }
  static std::atomic<bool> ends;

 private:
  static void* run(void* self) {
    static_cast<Reader*>(self)->read();
    return nullptr;
  }
  // One value never comes from two files.
  void read() {
    while (!ends) {
      const auto map = m_properties.getMap("pair.");
      if (!map || map->size() != 2 || (*map)["pair.1"] != (*map)["pair.2"]) m_bad++;
      if (m_properties.getValueList("pair.1", "")->size() != 1) m_bad++;
    }
  }

  Properties& m_properties;
  int m_bad = 0;
};
std::atomic<bool> Reader::ends{false};

TEST_F(PropertiesTest, ReadersSeeTheOldFileOrTheNewOneWhole) {
  configure("pair.1: 0\npair.2: 0\n");
  Properties& properties = *Props(false, false);
  Reader readers[] = {Reader(properties), Reader(properties), Reader(properties)};
  for (int i = 1; i < 200; i++) {
    const std::string number = std::to_string(i);
    configure("pair.1: " + number + "\npair.2: " + number + "\n");
    EXPECT_EQ(properties.getString("pair.1"), number);
  }
  Reader::ends = true;
  for (Reader& reader : readers) EXPECT_EQ(reader.badReads(), 0);
}

}  // namespace
