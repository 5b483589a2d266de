#include <signal.h>

#include <random>
#include <sstream>

#include "tests/support/world_test.h"
#include "tests/util/workers.h"
#include "util/include/properties.h"

using namespace testsupport;
using namespace vesk;

namespace {

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
  const struct {
    const char* key;
    const char* value;
    const char* from;
    const char* to;
  } rows[] = {
      {"one", "3", "one:    1   2  \n", "one: 3\n"},
      {"TWO", " $x", "Two=\"a   b\"   \n", "Two: \" \\$x\"\n"},
      {"long", "a\nb", "long: a, \\\n   b, \\\n\tc\n", "long: a\\nb\n"},
      {"my key=x", "", "my\\ key\\=x = y\\tz\\\\t\n", "my\\ key\\=x: \n"},
      {"hidden", "5", "#hidden: 5 \\\n# 6\n", "hidden: 5\n"},
      {"#", "v", " # live: no comment\n", " #: v\n"},
      {"new", "\"q\"", "last: no newline", "last: no newline\nnew: \"\\\"q\\\"\"\n"},
  };
  for (const auto& row : rows) {
    put(m_path, kHandWritten);
    const std::string result = saved([&](Properties& p) { EXPECT_TRUE(p.setString(row.key, row.value)); });
    std::string expected = kHandWritten;
    EXPECT_EQ(result, expected.replace(expected.find(row.from), strlen(row.from), row.to)) << row.key;
    EXPECT_EQ(saved(), result) << row.key;
  }
}

// What the lookup of a single value would not tell.
TEST_F(PropertiesSaveTest, AChangeOfMeaningIsSavedAlsoWhereTheValueStays) {
  using Change = std::function<void(Properties&)>;
  const auto list = [](const char* key, const Properties::ValueList& items,
                       bool keepDollar = true) -> Change {
    return [=](Properties& p) { p.setValueList(key, items, keepDollar); };
  };
  const struct {
    const char* before;
    Change change;
    const char* after;
  } rows[] = {
      {"k: a b\n", list("k", {"a b"}), "k: \"a b\"\n"},
      {"k: \"a b\"\n", list("k", {"a", "b"}), "k: a b\n"},
      {"k:  \"a\"\n", list("k", {"a"}), "k:  \"a\"\n"},
      {"k:\n", list("k", {""}), "k: \"\"\n"},
      {"k: \"file:x\"\n", [](Properties& p) { p.setText("k", "file:x"); }, "k: file:x\n"},
      {"k: 5$\n", [](Properties& p) { p.setString("k", "5$"); }, "k: 5\\$\n"},
      {"", list("a k", {"x"}), "a\\ k: x\n"},
      {"", list("k", {"10s", "'\\"}), "k: 10s \\'\\\\\n"},
      {"", list("k", {"$a", "x"}, false), "k: $a x\n"},
  };
  for (const auto& row : rows) {
    put(m_path, row.before);
    EXPECT_EQ(saved(row.change), row.after) << row.before;
  }
}

TEST_F(PropertiesSaveTest, LinesComeAndGo) {
  const struct {
    const char* before;
    const char* after;
    const char* why;
  } rows[] = {
      {"a: 1\n\n\n\nb: 2\n", "a: 1\n\nb: 2\n", "blank lines shrink to one"},
      {"a: 1\nA: 2\nb: 2\n", "a: 2\n# A: 2\nb: 2\n",
       "the later line of a key counts, in the first one's place"},
      {"#a: 1\na: 2\n", "a: 2\n# a: 2\n", "a line that was hidden comes to life"},
      {"gone: 1 \\\n  2\na: 1\n", "# gone: 1 \\\n#   2\na: 1\n", "a removed key stays as a comment"},
      {"# c\\\na: 1\n", "# c\\\na: 1\na: 1\n", "a comment's further line counts for readers alone"},
      {"# gone: 1\nnothing\n", "# gone: 1\nnothing\n", "a hidden key that is not held stays hidden"},
  };
  for (const auto& row : rows) {
    put(m_path, row.before);
    const std::string result = saved([](Properties& p) { p.remove("gone"); });
    EXPECT_EQ(result, row.after) << row.why;
    EXPECT_EQ(saved(), result) << row.why;
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
  std::filesystem::remove(in("other.new"));
  properties.setValueList("", {"x"}, true);
  EXPECT_EQ(properties.saveProperty(in("other")), -1);
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

// Content of a few pages, each line of which tells the writer.
std::string contentOf(const std::string& writer) {
  std::string text;
  for (int i = 0; i < 500; i++) text += "key" + std::to_string(i) + ": " + writer + "\n";
  return text;
}

// Even if every writer takes the other's lock for stale.
TEST_F(PropertiesSaveTest, WritersThatAreKilledOrRaceNeverMixTheFile) {
  put(m_path, contentOf("0"));
  std::mt19937 random(7);
  for (int round = 0; round < 40; round++) {
    pid_t writers[2];
    for (int i = 0; i < 2; i++) {
      writers[i] = fork();
      if (writers[i] != 0) continue;
      if (round % 2) dayclock::offset = 100;
      Properties properties;
      std::istringstream mine(contentOf(std::to_string(2 * round + i)));
      properties.load(mine, false);
      for (;;) properties.saveProperty(m_path);
    }
    usleep(random() % 5000 + 1000);
    for (pid_t writer : writers) {
      kill(writer, SIGKILL);
      waitpid(writer, nullptr, 0);
    }
    const std::string text = get(m_path);
    EXPECT_EQ(text, contentOf(text.substr(6, text.find('\n') - 6)));
    std::filesystem::remove(m_path + ".lock");
  }
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
