#include "util/include/kset.h"

#include <set>

#include "tests/support/world_test.h"
#include "util/include/error_util.h"
#include "util/include/setting.h"

using namespace testsupport;
using namespace vesk;

namespace {

class KSetTest : public WorldTest {
 protected:
  void SetUp() override {
    WorldTest::SetUp();
    if (IsSkipped()) return;
    for (const char* dir : {"a", "b"}) ASSERT_EQ(mkdir(in(dir).c_str(), 0755), 0);
    put(in("a/kset.domain"), "d.example");
    put(in("a/kset.dc.one"), "one");
    put(in("a/kset.dc.two"), std::string("two\0\n", 5));
    put(in("a/other"), "other");
    ASSERT_EQ(chmod(in("a/kset.domain").c_str(), 0640), 0);
    put(in("victim"), "stays");
  }

  /// The names in a directory, in order.
  std::string list(const std::string& dir) const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(in(dir)))
      names.insert(entry.path().filename());
    std::string text;
    for (const std::string& name : names) text += name + " ";
    return text;
  }
};

TEST_F(KSetTest, KnowsItsFilesByName) {
  EXPECT_TRUE(KSets::isKSetFile("kset."));
  EXPECT_FALSE(KSets::isKSetFile("kset"));
  EXPECT_TRUE(KSets::isKSetDCFile("kset.dc.x"));
  EXPECT_FALSE(KSets::isKSetDCFile("kset.dcx"));
}

TEST_F(KSetTest, CopiesWithModes) {
  KSets sets(in("a"));
  sets.copy(in("b"), "", "kset.domain");
  sets.copy(in("b"), "", "kset.missing");
  EXPECT_EQ(list("b"), "kset.domain ");
  EXPECT_EQ(modeOf(in("b/kset.domain")), S_IFREG | 0640u);
  sets.copyDCs(in("b"), "");
  EXPECT_EQ(get(in("b/kset.dc.two")), std::string("two\0\n", 5));
  ASSERT_EQ(unlink(in("b/kset.dc.one").c_str()), 0);
  ASSERT_EQ(symlink(in("victim").c_str(), in("b/kset.dc.one").c_str()), 0);
  sets.copy(in("b"), in("a"));
  EXPECT_EQ(list("b"), "kset.dc.one kset.dc.two kset.domain ");
  EXPECT_TRUE(S_ISREG(modeOf(in("b/kset.dc.one"))));
  EXPECT_EQ(get(in("victim")), "stays");
}

TEST_F(KSetTest, RollsBackToTheSnapshot) {
  KSets sets(in("a"));
  ASSERT_EQ(symlink(in("victim").c_str(), in("a/kset.link").c_str()), 0);
  ASSERT_EQ(mkfifo(in("a/kset.pipe").c_str(), 0666), 0);
  sets.snapShot("");
  put(in("a/kset.domain"), "changed");
  ASSERT_EQ(chmod(in("a/kset.domain").c_str(), 0600), 0);
  put(in("a/kset.new"), "new");
  ASSERT_EQ(unlink(in("a/kset.dc.one").c_str()), 0);
  ASSERT_EQ(symlink(in("victim").c_str(), in("a/kset.dc.one").c_str()), 0);
  sets.rollBack("");
  EXPECT_EQ(list("a"), "kset.dc.one kset.dc.two kset.domain other ");
  EXPECT_EQ(get(in("a/kset.domain")) + get(in("a/kset.dc.one")), "d.exampleone");
  EXPECT_EQ(modeOf(in("a/kset.domain")), S_IFREG | 0640u);
  EXPECT_EQ(get(in("victim")), "stays");
  sets.rollBack("");
  EXPECT_EQ(list("a"), "other ") << "the snapshot was spent";
}

TEST_F(KSetTest, CleansADirectory) {
  saveSetting("site", "s", SETTING_DEFAULT, false, false);
  ASSERT_EQ(mkdir(in("a/kset.dir").c_str(), 0755), 0);
  ASSERT_EQ(symlink(in("victim").c_str(), in("a/kset.link").c_str()), 0);
  KSets sets;
  sets.clean(in("a"));
  EXPECT_EQ(list("a"), "kset.dir other ");
  sets.clean("");
  EXPECT_EQ(GetSetting("site", "none"), "none") << "the memory goes too";
  try {
    sets.snapShot(in("gone"));
    ADD_FAILURE();
  } catch (const NotFoundException& failure) {
    EXPECT_EQ(failure.what(), "Cannot open directory " + in("gone/") + ": No such file or directory");
  }
}

}  // namespace
