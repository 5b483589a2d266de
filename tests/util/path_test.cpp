#include "util/include/path.h"

#include <fcntl.h>
#include <sys/resource.h>

#include <functional>
#include <set>
#include <sstream>

#include "tests/support/scratch_test.h"
#include "util/include/error_util.h"

using namespace testsupport;
using vesk::directory_iterator;
using vesk::Path;

namespace {

class PathTest : public ScratchTest {};

std::string joined(const Path& path) {
  std::string text;
  for (const std::string& component : path) text += component + "|";
  return text;
}

TEST_F(PathTest, ParsesAndPrints) {
  struct Row {
    const char* text;
    const char* components;
    const char* leaf;
    bool root;
    const char* printed;
  };
  const Row rows[] = {
      {"", "", "", false, ""},
      {"/", "", "", true, "/"},
      {"//", "", "", true, "/"},
      {"a", "", "a", false, "a"},
      {"/a", "", "a", true, "/a"},
      {"a//b/", "a|b|", "", false, "a/b"},
      {"a\\b", "a|", "b", false, "a/b"},
      {"\\a\\\\b/c", "a|b|", "c", false, "a/b/c"},
      {"/a/../. /\xff", "a|..|. |", "\xff", true, "/a/../. /\xff"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    const Path path(row.text);
    EXPECT_EQ(joined(path), row.components);
    EXPECT_EQ(path.leaf(), row.leaf);
    EXPECT_EQ(path.isRoot(), row.root);
    EXPECT_EQ(path.string('/', true), row.printed);
  }
  EXPECT_EQ(Path("/a b/c d").string('/', false), "/a_b/c_d");
  EXPECT_EQ(Path("x/a b/").winString(), "x\\a b");
  EXPECT_EQ(Path("/").winString(), "/");
  std::ostringstream stream;
  stream << Path("/a b/");
  EXPECT_EQ(stream.str(), "/a b");
}

TEST_F(PathTest, JoinsAndCompares) {
  EXPECT_EQ((Path("/a") / "b/c").string('/', true), "/a/b/c");
  EXPECT_EQ((Path("") / "b/").string('/', true), "b");
  Path doubled("a/b");
  doubled /= doubled;
  EXPECT_EQ(doubled.string('/', true), "a/b/a/b");
  EXPECT_THROW(Path("a") / "/", vesk::BadDataException);
  EXPECT_LT(Path("a"), Path("a/b"));
  EXPECT_LT(Path("a/b"), Path("b"));
  EXPECT_FALSE(Path("a/b") < Path("a\\b"));
  EXPECT_NE(Path("a/b"), Path("a/c"));
  EXPECT_EQ(Path("a//b"), Path("a/b"));
}

TEST_F(PathTest, FailuresHaveTheirClassesAndTexts) {
  const std::string gone = in("gone");
  const std::string full = in("full");
  ASSERT_EQ(mkdir(full.c_str(), 0755), 0);
  put(full + "/file", "x");
  struct Row {
    std::function<void()> call;
    const char* className;
    std::string text;
  };
  const std::string noEntry = ": No such file or directory";
  const Row rows[] = {
      {[] { Path::is_directory(""); }, "BadDataException", "Empty path"},
      {[] { Path::rename("", "a"); }, "BadDataException", "Empty path"},
      {[] { Path::rename("a", ""); }, "BadDataException", "Empty path"},
      {[] { Path::remove("", true); }, "BadDataException", "Empty path"},
      {[] { Path::createDirectories("", 0755); }, "BadDataException", "Empty path"},
      {[] { Path::createDirectories("no-such-dir/b", 0755); }, "BadDataException", "Empty path"},
      {[] { Path("").chdir(); }, "IOException", "can't change current dir to " + noEntry},
      {[&] { Path::is_directory(gone); }, "NotFoundException", "Cannot stat " + gone + noEntry},
      {[&] { Path::rename(gone, full); }, "IOException", "Cannot rename " + gone + " to " + full + noEntry},
      {[&] { Path(gone).chdir(); }, "IOException", "can't change current dir to " + gone + noEntry},
      {[&] { Path(gone).chmod(0644); }, "IOException",
       "can't change permissions of " + gone + " to 1a4" + noEntry},
      {[&] { Path(gone).chown(1, 2); }, "IOException", "can't change owner of " + gone + " to 1/2" + noEntry},
      {[&] { Path::remove(full, false); }, "IOException",
       "Cannot remove directory " + full + ": Directory not empty"},
      {[&] { Path::createDirectories(full + "/file/x", 0755); }, "IOException",
       "Cannot create directory " + full + "/file/x: Not a directory"},
      {[&] { directory_iterator iterator{Path(gone)}; }, "NotFoundException", gone + ": No such directory"},
      {[&] { directory_iterator iterator{Path(full + "/file")}; }, "SystemException",
       full + "/file: Failed to open"},
  };
  for (const Row& row : rows) {
    try {
      row.call();
      ADD_FAILURE() << "nothing thrown: " << row.text;
    } catch (const VESKException& failure) {
      EXPECT_EQ(failure.what(), row.text);
      EXPECT_STREQ(failure.className(), row.className);
    }
  }
  EXPECT_FALSE(Path::exists(""));
  EXPECT_FALSE(Path::exists(std::string("/\0tmp", 5)));
  EXPECT_NO_THROW(Path::remove(gone, true));
}

TEST_F(PathTest, CreatesDirectoriesWithTheirParents) {
  const std::string inner = in("a/b/c");
  const mode_t mask = umask(077);
  Path::createDirectories(inner + "/", 01777);
  umask(mask);
  EXPECT_EQ(modeOf(in("a")) & 07777, 01777u);
  EXPECT_EQ(modeOf(inner) & 07777, 01777u);
  EXPECT_THROW(Path::createDirectories(inner, 0750), vesk::IOException);
  EXPECT_EQ(modeOf(inner) & 07777, 0750u) << "a directory that is there gets the mode all the same";
  if (!canBeOrdinaryUser()) GTEST_SKIP() << "owners need the system's root";
  Path::createDirectories(in("owned"), 3, 4, 0700);
  struct stat info;
  ASSERT_EQ(stat(in("owned").c_str(), &info), 0);
  EXPECT_EQ(info.st_uid, 3u);
  EXPECT_EQ(info.st_gid, 4u);
}

TEST_F(PathTest, WalksNamesOfAnyBytes) {
  const std::set<std::string> names = {"back\\slash", " blank ", "new\nline",
                                       "\x01\xff",    "...",     std::string(255, 'n')};
  for (const std::string& name : names) put(in(name), "x");
  std::set<std::string> seen;
  for (directory_iterator iterator{Path(m_dir)}; iterator != directory_iterator::end(); ++iterator) {
    seen.insert(iterator->leaf());
    EXPECT_TRUE(Path::exists(*iterator)) << *iterator;
    EXPECT_EQ(iterator->string('/', true), in(iterator->leaf()));
  }
  EXPECT_EQ(seen, names);
  for (const std::string& name : seen) Path::remove(Path(m_dir).entry(name), false);
  EXPECT_EQ(directory_iterator{Path(m_dir)}, directory_iterator::end());
}

TEST_F(PathTest, RemovalNeverFollowsLinks) {
  const std::string outside = in("outside");
  const std::string tree = in("tree");
  Path::createDirectories(outside + "/keep", 0755);
  put(outside + "/file", "stays");
  Path::createDirectories(tree + "/sub/empty", 0755);
  for (const std::string& target :
       {outside, outside + "/file", std::string("/no/such/place"), std::string(".."), std::string("loop")}) {
    static int number = 0;
    ASSERT_EQ(symlink(target.c_str(), (tree + "/sub/link" + std::to_string(number++)).c_str()), 0);
  }
  ASSERT_EQ(symlink("loop", (tree + "/loop").c_str()), 0);
  ASSERT_EQ(mkfifo((tree + "/pipe").c_str(), 0600), 0);
  ASSERT_EQ(link((outside + "/file").c_str(), (tree + "/hard").c_str()), 0);
  Path::remove(tree, true);
  EXPECT_EQ(modeOf(tree), 0u);
  EXPECT_EQ(get(outside + "/file"), "stays");

  for (const char* target : {"outside", "nowhere"}) {
    ASSERT_EQ(symlink(target, in("link").c_str()), 0);
    Path::remove(in("link"), true);
    EXPECT_EQ(modeOf(in("link")), 0u) << target;
  }
  EXPECT_TRUE(Path::exists(outside + "/keep"));
}

TEST_F(PathTest, RemovalReportsWhatItMayNotRemove) {
  if (!canBeOrdinaryUser()) GTEST_SKIP() << "another user is needed";
  Path::createDirectories(in("theirs/sub"), 0755);
  put(in("theirs/sub/file"), "x");
  Path::createDirectories(in("closed/sub"), 0700);
  checkInChild(
      [this] {
        try {
          Path::remove(in("theirs"), true);
          ADD_FAILURE();
        } catch (const vesk::IOException& failure) {
          EXPECT_EQ(failure.what(), "Cannot remove file " + in("theirs/sub/file") + ": Permission denied");
        }
        EXPECT_THROW(Path::remove(in("closed"), true), vesk::SystemException);
      },
      kOrdinaryUser);
}

// Longer than the system takes in one call, and deeper than a process may have descriptors.
TEST_F(PathTest, TakesPathsBeyondTheSystemsLimit) {
  checkInChild([this] {
    const rlimit few = {48, 48};
    setrlimit(RLIMIT_NOFILE, &few);
    Path deep(m_dir);
    for (int i = 0; i < 300; ++i) deep /= std::string(40, 'd');
    Path::createDirectories(deep, 0755);
    EXPECT_TRUE(Path::is_directory(deep));
    deep.chmod(0700);
    Path::rename(deep, deep.entry("..").entry("renamed"));
    EXPECT_FALSE(Path::exists(deep));
    EXPECT_EQ(symlink("/etc", in("out").c_str()), 0);
    Path parent(m_dir);
    for (int i = 0; i < 299; ++i) parent /= std::string(40, 'd');
    directory_iterator iterator(parent);
    ASSERT_NE(iterator, directory_iterator::end());
    EXPECT_EQ(iterator->leaf(), "renamed");
    iterator->chdir();
    EXPECT_EQ(mkdir("here", 0755), 0);
    EXPECT_TRUE(Path::exists(iterator->entry("here")));
    EXPECT_FALSE(Path::exists(iterator->entry(std::string(256, 'x'))));
    Path("/").chdir();
    Path::remove(iterator->entry("here"), false);
    Path::remove(Path(m_dir).entry(std::string(40, 'd')), true);
    EXPECT_FALSE(Path::exists(in(std::string(40, 'd'))));
  });
}

}  // namespace
