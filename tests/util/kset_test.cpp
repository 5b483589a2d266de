#include "util/include/kset.h"

#include <sys/file.h>

#include <set>

#include "tests/support/world_test.h"
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
    put(in("a/kset.dc.one"), std::string("one\0\n", 5));
    put(in("a/kset.dcx"), "x");
    put(in("a/other"), "other");
    put(in("victim"), "stays");
    ASSERT_EQ(chmod(in("a/kset.domain").c_str(), 0640), 0);
    plantLink("a/kset.link");
    ASSERT_EQ(mkfifo(in("a/kset.pipe").c_str(), 0600), 0);
    ASSERT_EQ(mkdir(in("a/kset.dir").c_str(), 0700), 0);
    for (const char* half : {"a/kset.dc.KSET.TEMP.live", "a/kset.dc.KSET.TEMP.left"}) put(in(half), "half");
    ASSERT_EQ(chmod(in("a/kset.dc.KSET.TEMP.live").c_str(), 0600), 0);
    m_writer = open(in("a/kset.dc.KSET.TEMP.live").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(flock(m_writer, LOCK_EX | LOCK_NB), 0);
  }
  void TearDown() override {
    close(m_writer);
    WorldTest::TearDown();
  }

  void plantLink(const std::string& name) {
    unlink(in(name).c_str());
    ASSERT_EQ(symlink(in("victim").c_str(), in(name).c_str()), 0);
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

 private:
  int m_writer = -1;  // holds the lock of a file that it still writes
};

TEST_F(KSetTest, CopiesWithModesAndNeverThroughALink) {
  const KSets sets(in("a"));
  for (const char* name : {"kset.domain", "kset.missing"}) sets.copy(in("b"), "", name);
  EXPECT_EQ(list("b"), "kset.domain ");
  EXPECT_EQ(modeOf(in("b/kset.domain")), S_IFREG | 0640u);
  plantLink("b/kset.dc.one");
  sets.copyDCs(in("b"), "");
  EXPECT_EQ(list("b"), "kset.dc.one kset.domain ");
  EXPECT_EQ(get(in("b/kset.dc.one")), std::string("one\0\n", 5));
  sets.copy(in("b"), in("a"));
  EXPECT_EQ(list("b"), "kset.dc.one kset.dcx kset.domain ");
  EXPECT_EQ(get(in("victim")), "stays");
}

TEST_F(KSetTest, RollsBackToTheSnapshotOnceAndCleansTheMemoryToo) {
  saveSetting("site", "s", SETTING_DEFAULT, false, false);
  KSets sets(in("a"));
  EXPECT_FAILURE("NotFoundException|Cannot open directory " + in("gone/: No such file or directory"),
                 sets.snapShot(in("gone")));
  sets.snapShot("");
  put(in("a/kset.domain"), "changed");
  put(in("a/kset.new"), "new");
  ASSERT_EQ(chmod(in("a/kset.domain").c_str(), 0600), 0);
  plantLink("a/kset.dc.one");
  sets.rollBack("");
  EXPECT_EQ(list("a"), "kset.dc.KSET.TEMP.live kset.dc.one kset.dcx kset.dir kset.domain other ");
  EXPECT_EQ(get(in("a/kset.domain")) + get(in("a/kset.dc.one")), std::string("d.exampleone\0\n", 14));
  EXPECT_EQ(modeOf(in("a/kset.domain")), S_IFREG | 0640u);
  EXPECT_EQ(get(in("victim")), "stays");
  sets.rollBack("");
  EXPECT_EQ(list("a"), "kset.dc.KSET.TEMP.live kset.dir other ") << "the snapshot was spent";
  put(in("a/kset.site"), "s");
  sets.clean("");
  EXPECT_EQ(list("a"), "kset.dc.KSET.TEMP.live kset.dir other ");
  std::filesystem::remove("/var/velmora/kset.site");
  EXPECT_EQ(GetSetting("site", "none"), "none");
}

TEST_F(KSetTest, WhatIsClosedToTheCallerFailsOnlyIfItIsAFile) {
  if (!canBeOrdinaryUser()) GTEST_SKIP() << "root may do everything";
  const std::pair<mode_t, const char*> rows[] = {
      {0644, ""},
      {0600, "SystemException|OS call failed: Permission denied"},
  };
  for (const auto& [mode, failure] : rows) {
    ASSERT_EQ(chmod(in("a/kset.domain").c_str(), mode), 0);
    checkInChild([&, failure = failure] { EXPECT_FAILURE(failure, KSets(in("a")).snapShot("")); },
                 kOrdinaryUser);
  }
  ASSERT_EQ(chmod(in("a").c_str(), 0777), 0);
  checkInChild([&] { CleanTempSettingFiles(in("a")); }, kOrdinaryUser);
  EXPECT_EQ(list("a").find("kset.dc.KSET.TEMP.live kset.dc.one "), 0u)
      << "whether its writer lives is unknown";
}

}  // namespace
