
#include "tests/support/rows.h"
#include "tests/support/scratch_test.h"
#include "tests/support/wrapped.h"

using namespace testsupport;

static std::function<void()> gBeforeUnlink;  // runs once
WRAPPED(int, unlinkat, (int directory, const char* name, int flags),
        gBeforeUnlink ? std::exchange(gBeforeUnlink, nullptr)() : void(),
        __real_unlinkat(directory, name, flags))

using vesk::directory_iterator;
using vesk::Path;

namespace {

const std::string kGone = ": No such file or directory";
const std::string kEmpty = "BadDataException|Empty path";

using PathTest = ScratchTest;

// The root, the components and the leaf.
std::string shapeOf(const Path& path) {
  std::string shape = path.isRoot() ? "root " : "";
  for (const std::string& component : path) shape += component + ";";
  return shape + path.leaf();
}

TEST_F(PathTest, ParsesPrintsAndJoins) {
  for (const auto& [text, shape, printed] : rowsOf<3>("util/file/rows.txt", "paths: text, shape, printed")) {
    EXPECT_EQ(shapeOf(text), shape);
    EXPECT_EQ(Path(text).string('/', true), printed);
  }
  std::ostringstream stream;
  stream << Path("/a b/") << Path("/a b/c d").string('/', false) << Path("x/a b/").winString();
  EXPECT_EQ(stream.str(), "/a b/a_b/c_dx\\a b");
  Path doubled("a/b");
  const Path& same = doubled;
  doubled /= same;
  EXPECT_EQ(shapeOf(doubled), "a;b;a;b");
  EXPECT_EQ(Path("") / "b/", Path("b/"));
  EXPECT_FAILURE("BadDataException|Attempt to append root path", Path("a") / "/");
  EXPECT_TRUE(Path("a") < Path("a/b") && Path("a/b") < Path("b") && !(Path("a/b") < Path("a\\b")));
  for (const char* other : {"a/c", "/a/b", "c/b", "b"}) EXPECT_NE(Path("a/b"), Path(other));
}

TEST_F(PathTest, FailuresHaveTheirClassesAndTexts) {
  const std::string gone = in("gone"), file = in("full/file");
  shell("mkdir full; touch full/file");
  EXPECT_FAILURE(kEmpty, Path::is_directory(""));
  EXPECT_FAILURE(kEmpty, Path::rename("a", ""));
  EXPECT_FAILURE(kEmpty, Path::remove("", true));
  EXPECT_FAILURE(kEmpty, Path::createDirectories("no-such-dir/b", 0755));
  EXPECT_FAILURE("IOException|can't change current dir to " + kGone, Path("").chdir());
  EXPECT_FAILURE("NotFoundException|Cannot stat " + gone + kGone, Path::is_directory(gone));
  EXPECT_FAILURE("IOException|Cannot rename " + gone + " to " + file + kGone, Path::rename(gone, file));
  EXPECT_FAILURE("IOException|can't change owner of " + gone + " to 1/2" + kGone, Path(gone).chown(1, 2));
  EXPECT_FAILURE("IOException|Cannot remove directory " + in("full: Directory not empty"),
                 Path::remove(in("full"), false));
  EXPECT_FAILURE("IOException|can't change permissions of " + file + "/x to 1ed: Not a directory",
                 Path::createDirectories(file + "/x", 0755));
  EXPECT_FAILURE("NotFoundException|" + gone + ": No such directory", directory_iterator{Path(gone)});
  EXPECT_FAILURE("SystemException|" + file + ": Failed to open", directory_iterator{Path(file)});
  EXPECT_FALSE(Path::exists("") || Path::exists(std::string("/\0tmp", 5)));
  EXPECT_FAILURE("", Path::remove(gone, true));
}

TEST_F(PathTest, CreatesDirectoriesWhateverTheUmask) {
  const mode_t mask = umask(077);
  Path::createDirectories(in("a/b/"), getuid(), getgid(), 01777);
  umask(mask);
  EXPECT_EQ(modeOf(in("a")), S_IFDIR | 01777u);
  EXPECT_FAILURE("IOException|Cannot create directory " + in("a/b: File exists"),
                 Path::createDirectories(in("a/b"), 0750));
  EXPECT_EQ(modeOf(in("a/b")), S_IFDIR | 0750u) << "a directory that is there gets the mode all the same";
  if (!canBeOrdinaryUser()) GTEST_SKIP() << "another user is needed for the rest";
  Path::createDirectories(in("c/d"), kOrdinaryUser, 7, 0700);
  Path(in("a")).chown(7, kOrdinaryUser);
  for (const char* name : {"c", "c/d"}) EXPECT_EQ(ownerOf(in(name)), std::make_pair(kOrdinaryUser, gid_t{7}));
  EXPECT_EQ(ownerOf(in("a")), std::make_pair(uid_t{7}, gid_t{kOrdinaryUser}));
}

TEST_F(PathTest, IteratesOverNamesOfAnyBytes) {
  const std::set<std::string> names = {"back\\slash", " ",   "new\nline",
                                       "\x01\xff",    "...", std::string(255, 'n')};
  for (const std::string& name : names) put(in(name), "x");
  std::set<std::string> seen;
  for (directory_iterator entry{Path(m_dir)}; entry != directory_iterator::end(); ++entry)
    seen.insert(entry->string('/', true).substr(m_dir.size() + 1));
  EXPECT_EQ(seen, names);
  for (const std::string& name : seen) Path::remove(Path(m_dir).entry(name), false);
  EXPECT_EQ(directory_iterator{Path(m_dir)}, directory_iterator::end());
}

TEST_F(PathTest, RemovalNeverFollowsLinks) {
  shell("mkdir -p outside/keep tree/sub/empty; printf stays > outside/file; mkfifo tree/pipe");
  shell("ln outside/file tree/hard; for d in tree tree/sub .; do ln -s $PWD/outside $d/1; done");
  shell("for d in tree tree/sub .; do ln -s $PWD/outside/file $d/2; ln -s /no/such $d/3; done");
  for (const char* link : {"1", "2", "3"}) Path::remove(in(link), true);
  Path::remove(in("tree"), true);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(m_dir), {}), 1) << "outside alone is left";
  EXPECT_EQ(get(in("outside/file")), "stays");
  EXPECT_TRUE(Path::exists(in("outside/keep")));
}

// If a directory is moved while it is being emptied, nothing else is removed.
TEST_F(PathTest, RemovalStopsWhenItsDirectoryIsMoved) {
  shell("mkdir -p tree/sub other; touch tree/sub/file");
  gBeforeUnlink = [this] { ASSERT_EQ(rename(in("tree/sub").c_str(), in("other/sub").c_str()), 0); };
  EXPECT_FAILURE("IOException|Cannot remove directory " + in("tree/sub: Stale file handle"),
                 Path::remove(in("tree"), true));
  EXPECT_TRUE(Path::exists(in("other/sub")) && Path::exists(in("tree")));
}

// Longer than the limit of a system call, and deeper than this process's limit of descriptors.
TEST_F(PathTest, TakesPathsBeyondTheSystemsLimit) {
  const std::string name(40, 'd');
  checkInChild([&] {
    const rlimit few = {48, 48};
    setrlimit(RLIMIT_NOFILE, &few);
    Path parent(m_dir);
    for (int i = 0; i < 300; ++i) parent = parent.entry(name);
    Path::createDirectories(parent.entry("old"), 0700);
    Path::rename(parent.entry("old"), parent.entry("new"));
    EXPECT_FALSE(Path::exists(parent.entry("old")));
    const directory_iterator found(parent);
    ASSERT_NE(found, directory_iterator::end());
    EXPECT_EQ(found->leaf(), "new");
    found->chdir();
    EXPECT_EQ(mkdir("here", 0755), 0);
    EXPECT_TRUE(Path::is_directory(found->entry("here")));
    Path("/").chdir();
    Path::remove(in(name), true);
    EXPECT_FALSE(Path::exists(in(name)));
  });
}

}  // namespace
