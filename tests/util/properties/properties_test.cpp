// The configuration file: what its lines mean, and how it is saved.

#include <fokrazo/properties.h>

#include <sys/auxv.h>
#include <zlib.h>

#include <atomic>
#include <list>
#include <regex>
#include <sstream>

#include <fokrazo/fixed_paths.h>
#include <fokrazo/propnames.h>
#include <fokrazo/secure_open.h>
#include <fokrazo/setting.h>
#include "tests/support/workers.h"
#include "tests/support/world_test.h"

using namespace testsupport;
using namespace vesk;

// The C library's comparisons as they are in a Turkish locale, which few machines have installed.
extern "C" int strncasecmp(const char* a, const char* b, size_t size) noexcept {
  const auto fold = [](char c) { return c == 'I' ? c : asciiLower(c); };
  for (size_t i = 0; i < size; ++i) {
    if (fold(a[i]) != fold(b[i])) return fold(a[i]) - fold(b[i]);
    if (a[i] == '\0') break;
  }
  return 0;
}
extern "C" int strcasecmp(const char* a, const char* b) noexcept {
  return strncasecmp(a, b, SIZE_MAX);
}

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
  const char* const rows[][3] = {
      {"k=v", "K", "v"},
      {"k:=v", "k", "v"},
      {"k : v", "k", ": v"},
      {"k==v", "k", "=v"},
      {"  k:v", "k", "v"},
      {": v", "", "(none)"},
      {"! k: v", "k", "(none)"},
      {" # v", "#", "v"},
      {"my\\ key\\:\\=x: v", "my key:=x", "v"},
      {"a\\\\b\\c: v", "a\\b\\c", "v"},
      {"k: a\\\nb", "k", "a b"},
      {"k: a\\\\\nb: c", "k", "a\\"},
      {"k: a\\\\\\\n  b", "k", "a\\ b"},
      {"# c\\\nk: v", "k", "v"},
      {"k:   a    b   ", "k", "a b"},
      {"k: a \\ ", "k", "a  "},
      {"k: v\r\n", "k", "v"},
      {"k: \"a    b\"", "k", "a    b"},
      {"k: \"a\" \"b\"", "k", "\"a\" \"b\""},
      {"k: 'it\\'s'", "k", "it\\'s"},
      {"k: \"a\\\"b\\\\c\"", "k", "a\"b\\c"},
      {"k: \\\"a", "k", "\"a"},
      {"k: it's  a  b ", "k", "it's  a  b"},
      {"k: a\\tb\\\\tc\\\\\\td", "k", "a\tb\\tc\\\td"},
      {"k: 'a\\nb\\r\\v\\f'", "k", "a\nb\r\v\f"},
      {"k: a\\", "k", "a"},
  };
  for (const auto& [text, key, value] : rows) EXPECT_EQ(valueIn(text, key), value) << text;
}

TEST_F(PropertiesTest, VariablesComeFromSettingsThenTheEnvironmentThenTheFile) {
  setenv("CONFIG_TEST", "from environment", 1);
  setenv("CONFIG_TAIL", "x\\", 1);
  setenv("DOMAIN", "hidden by the setting", 1);
  clearSettingsMap();
  put("/var/velmora/kset.domain", "example.com");
  put("/var/velmora/kset.zonename", "x/OU=Zones,CN=Branch,DC=example");
  const char* const rows[][3] = {
      {"k: $DOMAIN/$ZONE/$SITE", "example.com/Branch/<unknown>", "$DOMAIN$/$ZONE$/$SITE$"},
      {"k: $CONFIG_TEST!", "from environment!", "$CONFIG_TEST$!"},
      {"k: '$DOMAIN'", "$DOMAIN", "$$DOMAIN"},
      {"a: \"x  y\"\nk: <$a>", "<x  y>", "<$a$>"},
      {"k: <$later>\nlater: x", "<>", "<$later$>"},
      {"k: \\$DOMAIN", "$DOMAIN", "$$DOMAIN"},
      {"k: $1abc", "abc", "$1$abc"},
      {"k: 5$", "5", "5$$"},
      {"a: '$a'\nk: $a$a", "$a$a", "$a$$a$"},
      {"k: $CONFIG_TAIL$DOMAIN", "x$DOMAIN", "$CONFIG_TAIL$$DOMAIN$"},
  };
  for (const auto& [text, value, kept] : rows) {
    EXPECT_EQ(valueIn(text, "k"), value) << text;
    EXPECT_EQ(valueIn(text, "k", false), kept) << "in rewriting mode: " << text;
  }
  unsetenv("DOMAIN");
  clearSettingsMap();
}

// Run by the next test, as a copy of this program that is another user's and set-user-id.
TEST(PropertiesOfASetUserProgram, DISABLED_IgnoreTheEnvironment) {
  if (getauxval(AT_SECURE) == 0) _exit(77);
  Properties properties;
  std::istringstream stream("k: <$CONFIG_TEST>");
  properties.load(stream, true);
  EXPECT_EQ(properties.getString("k"), "<>");
  fflush(nullptr);
  _exit(HasFailure() ? 1 : 0);  // the search for leaks at the usual end is not allowed in such a program
}

TEST_F(PropertiesTest, TheEnvironmentOfASetUserProgramIsNotRead) {
  if (!canBeOrdinaryUser()) GTEST_SKIP() << "another user is needed";
  const std::string copy = in("set-user-program");
  std::filesystem::copy_file("/proc/self/exe", copy);
  ASSERT_EQ(chown(copy.c_str(), kOrdinaryUser, kOrdinaryUser) + chmod(copy.c_str(), 04755), 0);
  const int status = inChild([&] {
    setenv("CONFIG_TEST", "from environment", 1);
    execl(copy.c_str(), copy.c_str(), "--gtest_also_run_disabled_tests",
          "--gtest_filter=PropertiesOfASetUserProgram.*", nullptr);
  });
  if (WEXITSTATUS(status) == 77) GTEST_SKIP() << "this file system has no set-user-id programs";
  EXPECT_EQ(status, 0);
}

TEST_F(PropertiesTest, NumbersWordsAndTimesFallBack) {
  load("n: 12x\nbad: x\nempty:\nyes: YES\nno: 0\nmaybe: 2\n");
  const std::pair<const char*, int> numbers[] = {{"n", 12}, {"bad", 0}, {"empty", 5}, {"missing", 5}};
  for (const auto& [key, number] : numbers) EXPECT_EQ(properties.getInt(key, 5), number) << key;
  EXPECT_TRUE(properties.getBool("yes", false) && properties.getBool("maybe", true));
  EXPECT_FALSE(properties.getBool("no", true) || properties.getBool("empty", false));
  const std::tuple<const char*, char, long, const char*> rows[] = {
      {"10", 'm', 600, ""},
      {"2M", 's', 5256000, ""},
      {" 3w", 's', 1814400, ""},
      {"10x", 'm', 420, "Bad unit specification in property file: x"},
      {"10 s", 'm', 420, "Bad unit specification in property file:  "},
      {"-1h", 'm', -1, ""},
      {"-2", 'm', 420, "Negative time specification in property file for t is ignored.  Using default."},
      {"5", 'q', 0, "Bad unit specification in property file: q"},
      {"2147440447", 's', 7, ""},
      {"99999999999999999999y", 's', 2147483647L * 31536000, ""},
  };
  for (const auto& [value, unit, seconds, message] : rows) {
    load(std::string("t: '") + value + "'");
    forgetLog();
    EXPECT_EQ(properties.getTime("t", unit, 7), seconds) << value;
    EXPECT_TRUE(isLogged(message)) << value;
    EXPECT_EQ(timesLogged("specification"), *message ? 1 : 0) << value;
  }
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

TEST_F(PropertiesTest, EscapedTextReadsBack) {
  const std::tuple<const char*, bool, const char*> rows[] = {
      {"a\tb\\", true, "a\\tb\\\\"}, {"a, b\"", true, "\"a, b\\\"\""}, {"$a", true, "\\$a"},
      {"$a$b", false, "$a\\b"},      {"$$a", false, "\\$a"},           {"$a$-$b$.", false, "$a-$b."},
  };
  for (const auto& [value, keepDollar, escaped] : rows)
    EXPECT_EQ(Properties::escapeValue(value, keepDollar), escaped);
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
  ASSERT_EQ(mkfifo(in("pipe").c_str(), 0600), 0);
  for (const std::string& path : {m_dir, in("pipe"), std::string("/dev/zero")}) {
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
  for (const std::string& text : {"k: " + std::string(million, 'x'), "k: " + std::string(million, '\\'),
                                  "k: " + std::string(million, '"'), "k: " + std::string(million, '$'),
                                  "k: \"" + std::string(million, ' '), growing, deep}) {
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

TEST_F(PropertiesTest, AFileOfItems) {
  put(in("items"), "# comment\n\n  ! comment\n one two \r\n\"a  b\"\nfile:" + in("items") + "\n'x' y");
  load("l: file:" + in("items"));
  EXPECT_EQ(list("l"), (List{"one two", "a  b", "file:" + in("items"), "'x' y"}));
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
  const std::string fails = "] due to unknown error. Skip reading config file for property l.\n";
  const std::tuple<const char*, int, const char*, std::string> rows[] = {
      {"missing", 1, "Config file [", "] does not exist.\n"},
      {"writable", 3, "Config file [",
       "] is world writable" + skip + "is not world writable to enhance security.\n"},
      {"symlink", 5, "Config file [", "] is symlink" + skip + "is not symlink\n"},
      {"linked", 6, "Config file [", "] has more than one hardlinks" + skip + "has only one hardlink\n"},
      {"pipe", 7, "Cannot open config file [", fails},
      {"good/x", 7, "Cannot open config file [", fails},
  };
  for (const auto& [name, refusal, begin, end] : rows) {
    int status = -1;
    EXPECT_EQ(SecureOpenForReading(in(name).c_str(), &status), nullptr);
    EXPECT_EQ(status, refusal) << name;
    load("l: file:" + in(name));
    forgetLog();
    EXPECT_EQ(list("l", "a b"), (List{"a", "b"})) << name;
    EXPECT_EQ(timesLogged(begin + in(name) + end), 1) << logged();
  }
  // A refusal is not remembered: once the file is corrected, it is used.
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
  EXPECT_FALSE(properties.addValueList("s", {"b", "a"}, false));
  EXPECT_FALSE(properties.delValueList("s", {"A"}, false));
  EXPECT_TRUE(properties.delValueList("s", {"a", "x"}, false) && properties.modified());
  EXPECT_EQ(properties.getString("l") + "|" + properties.getString("s"), "a b|b");
  EXPECT_EQ(list("L"), (List{"a", "b"}));
  EXPECT_TRUE(properties.remove("l"));
  EXPECT_TRUE(list("L").empty());
}

// Also items that need quotes, in both modes, and after further changes.
TEST_F(PropertiesTest, AnyItemStaysWhatItIs) {
  List items = {"a b", "", "$HOME", "it's", "\"q\"", "x,y", "back\\slash", "tab\there", "plain", "5$$"};
  items.sort();
  for (bool expand : {true, false}) {
    load("", expand);
    properties.setValueList("l", {"$A", "c d"}, true);
    EXPECT_TRUE(properties.addValueList("l", items, true));
    EXPECT_FALSE(properties.delValueList("l", {"b"}, true));
    EXPECT_TRUE(properties.delValueList("l", {"$A", "c d"}, true));
    put(in("conf"), "# l:\n");
    ASSERT_EQ(properties.saveProperty(in("conf")), 0);
    Properties read;
    read.load(in("conf").c_str(), true);
    EXPECT_EQ(*read.getValueList("l", ""), items) << get(in("conf"));
  }
}

// Other programs' configuration files spell these keys: none may come, go or change by mistake.
TEST(PropertyNames, TheTableIsAsItWas) {
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

const char kHandWritten[] =
    "# A file as people write it: odd   spacing, \xc3\xbc\xc3\xa9 \xe2\x82\xac\n"
    "#continued \\\n# comment \\\n! and more\n"
    "!other comment\n"
    "\n"
    "one:    1   2  \n"
    "Two=\"a   b\"   \n"
    "   three    'it\\'s  $HOME'\n"
    "four: $HOME/x \\$y $1abc 5$\n"
    "quotes: \"he said \\\"no\\\" 'x'\" b\n"
    "long: a, \\\n   b, \\\n\tc\n"
    "my\\ key\\=x = y\\tz\\\\t\n"
    "bare\n"
    " # live: no comment\n"
    ": no key\n"
    "#hidden: 5 \\\n# 6\n"
    "\r\n"
    "cr: line\r\n"
    "utf8: gr\xc3\xbc\xc3\x9f\n"
    "last: no newline";

class PropertiesSaveTest : public WorldTest {
 protected:
  void SetUp() override {
    WorldTest::SetUp();
    m_path = in("conf");
  }
  std::string saved(const std::function<void(Properties&)>& change = nullptr, bool expand = false) {
    Properties properties;
    properties.load(m_path.c_str(), expand);
    if (change) change(properties);
    EXPECT_EQ(properties.saveProperty(m_path), 0);
    EXPECT_FALSE(properties.modified());
    return get(m_path);
  }

  std::string m_path;
};

TEST_F(PropertiesSaveTest, WithNoChangeTheFileComesBack) {
  std::string large;
  for (int i = 0; i < 10000; i++)
    large += (i % 7 ? "key" + std::to_string(i) + " =  value " + std::to_string(i) : "# line") + "\n";
  const std::string handWritten = kHandWritten;
  for (const std::string& text : {handWritten, handWritten + "\n", large, std::string("\n"), std::string()}) {
    put(m_path, text);
    EXPECT_EQ(saved(), text);
  }
  EXPECT_EQ(modeOf(m_path) & 07777, 0644u);
  EXPECT_FALSE(std::filesystem::exists(m_path + ".lock") || std::filesystem::exists(m_path + ".new"));
}

TEST_F(PropertiesSaveTest, OneChangeChangesOneLine) {
  const char* const rows[][4] = {
      {"one", "3", "one:    1   2  \n", "one: 3\n"},
      {"TWO", " $x", "Two=\"a   b\"   \n", "Two: \" \\$x\"\n"},
      {"long", "a\nb", "long: a, \\\n   b, \\\n\tc\n", "long: a\\nb\n"},
      {"my key=x", "", "my\\ key\\=x = y\\tz\\\\t\n", "my\\ key\\=x: \n"},
      {"hidden", "5", "#hidden: 5 \\\n# 6\n", "hidden: 5\n"},
      {"#", "v", " # live: no comment\n", " #: v\n"},
      {"new", "\"q\"", "last: no newline", "last: no newline\nnew: \"\\\"q\\\"\"\n"},
  };
  for (const auto& [key, value, from, to] : rows) {
    put(m_path, kHandWritten);
    const std::string result =
        saved([&, k = key, v = value](Properties& p) { EXPECT_TRUE(p.setString(k, v)); });
    std::string expected = kHandWritten;
    EXPECT_EQ(result, expected.replace(expected.find(from), strlen(from), to)) << key;
    EXPECT_EQ(saved(), result) << key;
  }
}

// Changes that the lookup of a single value would not show.
TEST_F(PropertiesSaveTest, AChangeOfMeaningIsSavedAlsoWhereTheValueStays) {
  using Change = std::function<void(Properties&)>;
  const auto list = [](const Properties::ValueList& items, bool keepDollar = true) -> Change {
    return [=](Properties& p) { p.setValueList("k", items, keepDollar); };
  };
  const std::tuple<const char*, Change, const char*> rows[] = {
      {"k: a b\n", list({"a b"}), "k: \"a b\"\n"},
      {"k: \"a b\"\n", list({"a", "b"}), "k: a b\n"},
      {"k:  \"a\"\n", list({"a"}), "k:  \"a\"\n"},
      {"k:\n", list({""}), "k: \"\"\n"},
      {"k: \"file:x\"\n", [](Properties& p) { p.setText("k", "file:x"); }, "k: file:x\n"},
      {"k: 5$\n", [](Properties& p) { p.setString("k", "5$"); }, "k: 5\\$\n"},
      {"k: a\n", [](Properties& p) { p.setText("k", "'$a'"); }, "k: '$a'\n"},
      {"", list({"10s", "'\\"}), "k: 10s \\'\\\\\n"},
      {"", list({"$a", "x"}, false), "k: $a x\n"},
  };
  for (const auto& [before, change, after] : rows) {
    put(m_path, before);
    EXPECT_EQ(saved(change), after) << before;
  }
}

TEST_F(PropertiesSaveTest, LinesComeAndGo) {
  const char* const rows[][3] = {
      {"a: 1\n\n\n\nb: 2\n", "a: 1\n\nb: 2\n", "blank lines shrink to one"},
      {"a: 1\nA: 2\nb: 2\n", "a: 2\n# A: 2\nb: 2\n",
       "the later line of a key counts, in the first one's place"},
      {"#a: 1\na: 2\n", "a: 2\n# a: 2\n", "a line that was hidden comes to life"},
      {"gone: 1 \\\n  2\na: 1\n", "# gone: 1 \\\n#   2\na: 1\n", "a removed key stays as a comment"},
      {"# c\\\na: 1\n", "# c\\\na: 1\na: 1\n", "a comment's further line counts for readers alone"},
      {"# gone: 1\nnothing\n", "# gone: 1\nnothing\n", "a hidden key that is not held stays hidden"},
  };
  for (const auto& [before, after, why] : rows) {
    put(m_path, before);
    EXPECT_EQ(saved([](Properties& p) { p.remove("gone"); }), after) << why;
    EXPECT_EQ(saved(), after) << why;
  }
}

TEST_F(PropertiesSaveTest, WithExpansionTheValuesAreWritten) {
  put(m_path, "a: x\nb: $a/$HOME_NOT_SET/y\n");
  EXPECT_EQ(saved([](Properties& p) { p.setText("a", "'$a'  z"); }, true), "a: '$a' z\nb: x//y\n");
}

TEST_F(PropertiesSaveTest, AFileThatCannotBeWrittenStaysAsItWas) {
  Properties& properties = *Props(false, false);
  put(in("other"), "a: 1\n");
  std::filesystem::create_directory(in("other.new"));
  const std::pair<std::string, std::string> rows[] = {
      {"missing/conf", "create lock file " + in("missing/conf.lock") + ": No such file or directory"},
      {"conf", "open config file " + in("conf")},
      {"other", "open temporary config file " + in("other.new")},
  };
  for (const auto& [name, text] : rows) {
    EXPECT_EQ(properties.saveProperty(in(name)), -1);
    EXPECT_TRUE(isLogged("Unable to " + text + "\n")) << logged();
  }
  EXPECT_TRUE(std::filesystem::exists(in("conf.lock")));
  EXPECT_FALSE(std::filesystem::exists(in("conf.new")));
  for (const char* left : {"other.new", "other.lock"}) std::filesystem::remove(in(left));
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

TEST_F(PropertiesSaveTest, UpdatesOfManyProcessesAllCount) {
  put(m_path, "# counter\ncount: 0\n");
  pid_t writers[4];
  for (pid_t& writer : writers) {
    writer = fork();
    if (writer != 0) continue;
    int done = 0;
    while (done < 10)
      done += Properties::update(m_path, [](Properties& p) {
                return p.setString("count", std::to_string(p.getInt("count", 0) + 1));
              }) == 0;
    _exit(0);
  }
  for (pid_t writer : writers) waitpid(writer, nullptr, 0);
  EXPECT_EQ(get(m_path), "# counter\ncount: 40\n");
  EXPECT_EQ(Properties::update(m_path, [](Properties&) { return false; }), 0);
  EXPECT_EQ(Properties::update(in("missing"), [](Properties&) { return true; }), -1);
  EXPECT_FALSE(std::filesystem::exists(in("missing.lock")));
}

}  // namespace
