#include <sys/stat.h>

#include <sstream>

#include "tests/support/world_test.h"
#include "util/include/properties.h"
#include "util/include/secure_open.h"

using namespace testsupport;
using namespace vesk;

namespace {

using List = Properties::ValueList;

class PropertiesListTest : public WorldTest {
 protected:
  void load(const std::string& text, bool expand = true) {
    std::istringstream stream(text + "\nlog: TRACE\nlogger.destination: /var/log/test.log\n" +
                              "logger.file.flush.frequency: 1\n");
    properties.load(stream, expand);
  }
  List list(const std::string& key, const std::string& fallback = "") {
    return *properties.getValueList(key, fallback);
  }

  Properties properties;
};

TEST_F(PropertiesListTest, ItemsAreCutAtBlanksAndCommas) {
  const struct {
    const char* value;
    List items;
  } rows[] = {
      {"a b,c , d", {"a", "b", "c", "d"}},
      {"a\\ b c\\,d", {"a b", "c,d"}},
      {"\"a, b\" 'c d'", {"a, b", "c d"}},
      {"x\"a b\"y z", {"x\"a b\"y", "z"}},
      {"'it\\'s' \"\"", {"it\\'s", ""}},
      {"a\\tb", {"a", "b"}},
      {"\"a b", {"\"a b"}},
      {", ,", {}},
      {"", {}},
  };
  for (const auto& row : rows) {
    load(std::string("l: ") + row.value);
    EXPECT_EQ(list("l"), row.items) << row.value;
  }
}

TEST_F(PropertiesListTest, OnlyTheFilesOwnListIsShared) {
  load("l: a b\nempty:");
  const auto first = properties.getValueList("l", "");
  EXPECT_EQ(first, properties.getValueList("l", "other"));
  EXPECT_EQ(properties.getValueList("empty", ""), properties.getValueList("empty", ""));
  const auto fallback = properties.getValueList("missing", "x y");
  EXPECT_EQ(*fallback, (List{"x", "y"}));
  EXPECT_NE(fallback, properties.getValueList("missing", "x y"));
  EXPECT_NE(logged().find("Property list l: (a), (b), "), std::string::npos);
  load("l: c");
  EXPECT_EQ(list("l"), List{"c"});
  EXPECT_EQ(*first, (List{"a", "b"}));
}

TEST_F(PropertiesListTest, AFileOfItems) {
  put(in("items"), "# comment\n\n  ! comment\n one two \r\n\"a  b\"\nfile:" + in("items") + "\n'x' y");
  load("l: file:" + in("items"));
  EXPECT_EQ(list("l"), (List{"one two", "a  b", "file:" + in("items"), "'x' y"}));
  EXPECT_EQ(properties.getValueList("l", ""), properties.getValueList("l", ""));
  EXPECT_EQ(list("missing", "file:" + in("items")).size(), 4u);
  EXPECT_NE(logged().find("Opening config file [" + in("items") + "]."), std::string::npos);
}

// Each row breaks the rules of those below it too, as far as a file can.
TEST_F(PropertiesListTest, AnUnsafeFileIsReportedInItsOwnWordsAndTheDefaultTakesOver) {
  put(in("good"), "item\n");
  put(in("writable"), "item\n");
  put(in("linked"), "item\n");
  ASSERT_EQ(chmod(in("writable").c_str(), 0666), 0);
  ASSERT_EQ(chmod(in("linked").c_str(), 0666), 0);
  std::filesystem::create_hard_link(in("linked"), in("linked2"));
  std::filesystem::create_symlink(in("linked"), in("symlink"));
  std::filesystem::create_directory(in("directory"));
  ASSERT_EQ(mkfifo(in("pipe").c_str(), 0600), 0);
  const struct {
    const char* name;
    int status;
    const char* begin;
    const char* end;
  } rows[] = {
      {"missing", 1, "Config file [", "] does not exist.\n"},
      {"writable", 3, "Config file [",
       "] is world writable. Skip reading config file for property l. Please ensure the file is not world "
       "writable to enhance security.\n"},
      {"symlink", 5, "Config file [",
       "] is symlink. Skip reading config file for property l. Please ensure the file is not symlink\n"},
      {"linked", 6, "Config file [",
       "] has more than one hardlinks. Skip reading config file for property l. Please ensure the file has "
       "only one hardlink\n"},
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
    const std::string message = row.begin + in(row.name) + row.end;
    const std::string log = logged();
    EXPECT_NE(log.find(message), std::string::npos) << log;
    EXPECT_EQ(log.find(message), log.rfind(message));
  }
  // Once the file is mended it counts, as a refusal is not remembered.
  load("l: file:" + in("late"));
  EXPECT_TRUE(list("l").empty());
  put(in("late"), "item");
  EXPECT_EQ(list("l"), List{"item"});
}

TEST_F(PropertiesListTest, AnotherUsersFileIsRefusedAndAClosedOneToo) {
  if (!canBeOrdinaryUser()) GTEST_SKIP() << "only as the system's own root";
  put(in("foreign"), "item");
  ASSERT_EQ(chown(in("foreign").c_str(), kOrdinaryUser, 0), 0);
  ASSERT_EQ(chmod(in("foreign").c_str(), 0666), 0);
  put(in("closed"), "item");
  ASSERT_EQ(chmod(in("closed").c_str(), 0600), 0);
  int status = -1;
  EXPECT_EQ(SecureOpenForReading(in("foreign").c_str(), &status), nullptr);
  EXPECT_EQ(status, 2);
  checkInChild(
      [&] {
        EXPECT_EQ(SecureOpenForReading(in("closed").c_str(), &status), nullptr);
        EXPECT_EQ(status, 4);
      },
      kOrdinaryUser);
}

TEST_F(PropertiesListTest, ListsChangeInMemory) {
  load("l: b, a\ns: a b");
  EXPECT_TRUE(properties.addValueList("l", {"b"}, false));  // sorts
  EXPECT_EQ(properties.getString("l"), "a b");
  EXPECT_FALSE(properties.addValueList("s", {"b", "a"}, false));
  EXPECT_FALSE(properties.modified() && properties.delValueList("s", {"A"}, false));
  EXPECT_TRUE(properties.delValueList("s", {"a", "x"}, false));
  EXPECT_EQ(properties.getString("s"), "b");
  properties.setValueList("new", {"x", "y"}, false);
  EXPECT_EQ(properties.getString("NEW"), "x y");
  EXPECT_TRUE(properties.modified());
  EXPECT_TRUE(properties.remove("l"));
  EXPECT_TRUE(list("l").empty());
}

// Also items that need quotes, in both modes, and after further changes.
TEST_F(PropertiesListTest, AnyItemStaysWhatItIs) {
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

}  // namespace
