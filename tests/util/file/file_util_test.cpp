// Files, lock files, and the program's name.

#include "tests/support/rows.h"
#include "tests/support/workers.h"
#include "tests/support/world_test.h"

using namespace testsupport;

extern "C" const char* __progname;

namespace {

const std::string kGone = ": No such file or directory";
const std::string kCallFailed = "SystemException|OS call failed";
constexpr char kDir[] = "/var/zantrel";
constexpr char kTempDir[] = "/var/zantrel/tmp";

using Owner = std::pair<uid_t, gid_t>;

class FileUtilTest : public WorldTest {};

TEST_F(FileUtilTest, ReadsAndWritesWholeFiles) {
  const std::string content(100000, '\0');
  int mode = 04751;
  WriteFile(in("file"), content, &mode);
  EXPECT_EQ(GetFileSize(in("file")), 100000);
  EXPECT_EQ(ReadFile(in("file"), &(mode = 0)), content);
  EXPECT_EQ(mode, 0751) << "nine bits";
  ASSERT_EQ(mkfifo(in("pipe").c_str(), 0600), 0);
  EXPECT_EQ(ReadFile(in("pipe"), nullptr), "") << "nobody has to write";
  EXPECT_FAILURE(kCallFailed + ": No such device or address", WriteFile(in("pipe"), "nobody reads", nullptr));
  EXPECT_FAILURE(kCallFailed + kGone, GetPerms(in("gone")));
  EXPECT_FAILURE(kCallFailed + kGone, ReadFile(in("gone"), &mode));
  EXPECT_FAILURE(kCallFailed + ": Is a directory", ReadFile(m_dir, nullptr));
  EXPECT_FAILURE(kCallFailed + ": No space left on device", WriteFile("/dev/full", "x", nullptr));

  unsigned long long kilobytes = 7;
  EXPECT_EQ(GetFreeSpaceSize(in("gone"), kilobytes), ENOENT);
  EXPECT_EQ(kilobytes, 7u);
  EXPECT_TRUE(isLogged("statfs return (-1). Cannot detect free disk space." + kGone));
  EXPECT_EQ(GetFreeSpaceSize("/proc", kilobytes), 0);
  EXPECT_EQ(kilobytes, 0u) << "a file system without blocks";
}

TEST_F(FileUtilTest, RenamesWithOrWithoutAnException) {
  EXPECT_EQ(renameFile(in("gone"), in("gone")), 0) << "equal paths are not looked at";
  testing::internal::CaptureStderr();
  EXPECT_EQ(renameFile(in("gone"), in("d")), -1);
  const std::string text = "Unable to rename \"" + in("gone") + "\" to \"" + in("d") + "\".";
  EXPECT_EQ(testing::internal::GetCapturedStderr(), text + "\n");
  EXPECT_TRUE(isLogged(text));
  EXPECT_FAILURE("IOException|Move " + in("gone") + " to " + in("d") + " failed" + kGone,
                 MoveFile(in("gone"), in("d")));
}

TEST_F(FileUtilTest, TemporaryFilesHaveModeAndOwnerOrDoNotExist) {
  std::string name;
  std::ofstream out;
  const std::function<void(mode_t mode, uid_t user, gid_t group)> makers[] = {
      [&](mode_t mode, uid_t user, gid_t group) { close(mkstemp(name = in("a.XXXXXX"), mode, user, group)); },
      [&](mode_t mode, uid_t user, gid_t group) {
        EXPECT_EQ(OpenTempFile((name = in("b.XXXXXX")).data(), mode, user, group, out), 0);
        out << "text" << std::flush;
        EXPECT_EQ(get(name), "text");
        out.close();
      },
  };
  const bool owners = canBeOrdinaryUser();
  const Owner owner = owners ? Owner{kOrdinaryUser, 7} : Owner{getuid(), getgid()};
  for (const auto& make : makers) {
    make(0604, owner.first, owner.second);
    EXPECT_EQ(modeOf(name), S_IFREG | 0604u);
    EXPECT_EQ(ownerOf(name), owner);
    unlink(name.c_str());
  }
  EXPECT_EQ(mkstemp(name = in("exact name")), -1);
  EXPECT_EQ(errno, EINVAL);
  EXPECT_EQ(OpenTempFile((name = in("c.XXXXXX")).data(), 0604, out), 0);
  EXPECT_EQ(modeOf(name), S_IFREG | 0604u);
  out.close();
  unlink(name.c_str());
  EXPECT_FAILURE(kCallFailed + kGone, OpenTempFile((name = in("no/c.XXXXXX")).data(), 0600, out));
  if (!owners) GTEST_SKIP() << "another user is needed for the rest";
  ASSERT_EQ(chmod(m_dir.c_str(), 0777), 0);
  const auto giveToRoot = [&] {
    const long descriptors = openDescriptors();
    for (const auto& make : makers)
      EXPECT_FAILURE(kCallFailed + ": Operation not permitted", make(0600, 0, 0));
    EXPECT_EQ(openDescriptors(), descriptors);
  };
  checkInChild(giveToRoot, kOrdinaryUser);
  EXPECT_TRUE(std::filesystem::is_empty(m_dir)) << "nothing is left whose owner cannot be set";
}

// In a program that has closed its standard streams, output must not go to a file of the library.
TEST_F(FileUtilTest, DescriptorsAreCloseOnExecAndAboveTheStandardStreams) {
  put(in("file"), "");
  int status = 0;
  std::string name;
  const std::function<int()> openers[] = {
      [&] { return mkstemp(name = in("a.XXXXXX")); },
      [&] { return mkstemp(name = in("b.XXXXXX"), 0600, getuid(), getgid()); },
      [&] { return QtrLock(in("lock").c_str(), &status); },
      [&] { return QtrLock(in("lock").c_str(), &status, 0600); },
      [&] { return vesk::Properties::createLockFile(in("file.lock")); },
      [&] { return fileno(SecureOpenForReading(in("file").c_str(), &status)); },
  };
  for (const auto& open : openers)
    checkInChild([&] {
      for (int fd : {0, 1, 2}) close(fd);
      const int fd = open();
      if (fd <= 2 || fcntl(fd, F_GETFD) != FD_CLOEXEC) _exit(2 + (&open - openers));  // no stream is left
    });
}

TEST_F(FileUtilTest, FollowsLinksByHand) {
  shell("touch file; mkdir sub");
  configure("brondalt.clients.threads.stacksize: 262144\n");  // enough for chains of any length
  Worker([&] {
    for (const auto& [link, target, result] :
         rowsOf<3>("util/file/rows.txt", "links: name, target, result")) {
      EXPECT_EQ(symlink(here(target).c_str(), in(link).c_str()), 0);
      std::string out = "untouched";
      EXPECT_EQ(GetSymLinkPath(in(link).c_str(), out, 0), !result.empty()) << link;
      EXPECT_EQ(out, here(result));
    }
  });
  EXPECT_TRUE(isLogged("Detected a potential circular sym link in " + in("loop") + "!"));
  checkInChild([this] {
    std::string out;
    EXPECT_TRUE(chdir(m_dir.c_str()) == 0 && GetSymLinkPath("relative", out, 0) && out == "file");
  });
}

TEST_F(FileUtilTest, CopiesFilesByPatternAndNeverThroughALink) {
  shell("mkdir from to; for f in a.conf b.conf c.text; do printf $f > from/$f; done; printf stays > victim");
  shell("mkfifo from/pipe; ln -s ../victim to/a.conf");
  for (const char* pattern : {"(a|b)\\.conf", "^c", "text$", "pipe"})
    CopyFiles(in("from"), in("to"), pattern);
  EXPECT_TRUE(S_ISREG(modeOf(in("to/a.conf"))));
  EXPECT_EQ(get(in("to/a.conf")) + get(in("to/b.conf")), "a.confb.conf");
  EXPECT_EQ(modeOf(in("to/c.text")), 0u) << "anchors match nowhere";
  CopyFile(in("victim"), in("victim"));
  CopyFile(in("gone"), in("victim"));
  EXPECT_EQ(get(in("victim")), "stays");
  EXPECT_FAILURE(kCallFailed + kGone, CopyFiles(in("gone"), in("to"), "."));
  EXPECT_FAILURE("BadDataException|CopyFiles: Error compiling pattern: Unmatched ( or \\(",
                 CopyFiles(m_dir, m_dir, "a("));
}

TEST_F(FileUtilTest, AnythingInThePlaceOfTheTemporaryDirectoryIsReplaced) {
  const std::string victim = "/var/log/victim";  // on the same file system as the plants
  put(victim, "stays");
  ASSERT_EQ(chmod(victim.c_str(), 0600), 0);
  const std::string anothers = canBeOrdinaryUser() ? "install -d -o 1000 -g 7 " : "mkdir ";
  const std::string plants[] = {"true ",   "ln /var/log/victim ", "ln -s /var/log ", "ln -s /no/such ",
                                "mkfifo ", "mkdir -m 7777 ",      anothers};
  for (const std::string path : {kDir, kTempDir})
    for (const std::string& plant : plants) {
      SCOPED_TRACE(plant + path);
      std::filesystem::remove_all(kDir);
      std::filesystem::create_directory(std::filesystem::path(path).parent_path());
      ASSERT_EQ(system((plant + path).c_str()), 0);
      const mode_t mask = umask(077);
      char dir[256];
      EXPECT_EQ(GetZantrelTempDir(0, dir, sizeof dir), 0);
      EXPECT_EQ(umask(mask), 077u);
      EXPECT_STREQ(dir, kTempDir);
      for (const char* made : {kDir, kTempDir}) {
        EXPECT_EQ(modeOf(made), S_IFDIR | 0755u) << made;
        EXPECT_EQ(ownerOf(made), Owner(0, 0)) << made;
      }
    }
  EXPECT_EQ(modeOf(victim), S_IFREG | 0600u);
  EXPECT_EQ(get(victim), "stays");
}

TEST_F(FileUtilTest, OrdinaryUsersHaveTheSystemsTemporaryDirectory) {
  char buffer[8] = "????";
  EXPECT_EQ(GetZantrelTempDir(kOrdinaryUser, buffer, 4), -1);
  EXPECT_EQ(errno, ERANGE);
  EXPECT_EQ(GetZantrelTempDir(kOrdinaryUser, buffer, 5), 0);
  EXPECT_STREQ(buffer, "/tmp");
  EXPECT_EQ(GetZantrelTempDir(kOrdinaryUser, nullptr, 5), -1);
  EXPECT_EQ(errno, EFAULT);
  EXPECT_EQ(modeOf(kDir), 0u);
  EXPECT_EQ(GetZantrelTempDir(0, buffer, sizeof buffer), -1);
  EXPECT_EQ(errno, ERANGE);
  if (!canBeOrdinaryUser()) GTEST_SKIP() << "another user is needed for the rest";
  ASSERT_EQ(chmod(kTempDir, 0700), 0);
  const auto repair = [] {
    char dir[256];
    const long descriptors = openDescriptors();
    EXPECT_EQ(GetZantrelTempDir(0, dir, sizeof dir), -1) << "only root repairs root's";
    EXPECT_EQ(openDescriptors(), descriptors);
  };
  checkInChild(repair, kOrdinaryUser);
  EXPECT_EQ(modeOf(kTempDir), S_IFDIR | 0700u);
}

class LockFileTest : public ScratchTest {
 protected:
  /// The permissions of the lock file, made and locked; 0 if that fails or it is no regular file.
  int lockAndLook(const std::string& path, unsigned mode = 0) {
    const mode_t mask = umask(0);
    int status = 99;
    const int fd = mode == 0 ? QtrLock(path.c_str(), &status) : QtrLock(path.c_str(), &status, mode);
    umask(mask);
    EXPECT_EQ(status, fd < 0 ? -1 : 0);
    if (fd < 0) return 0;
    close(fd);
    return S_ISREG(modeOf(path)) ? modeOf(path) & 07777 : 0;
  }
};

TEST_F(LockFileTest, ReportsTheProcessThatHoldsIt) {
  int status = -1;
  const pid_t other = fork();
  if (other == 0) {
    if (QtrLock(in("lock").c_str(), &status) >= 0 && status == 0) raise(SIGSTOP);
    _exit(1);
  }
  waitpid(other, &status, WUNTRACED);
  ASSERT_TRUE(WIFSTOPPED(status));
  const int fd = QtrLock(in("lock").c_str(), &status);
  EXPECT_GE(fd, 0);
  EXPECT_EQ(status, other);
  kill(other, SIGKILL);
  waitpid(other, &status, 0);
  EXPECT_EQ(QtrLock(fd) + QtrUnlock(fd), 0);
  close(fd);
  EXPECT_EQ(QtrLock(fd), -1);
}

TEST_F(LockFileTest, ReplacesAnythingThatIsNoFile) {
  shell("printf kept > precious; ln -s precious lock; mkdir -p full/lock");
  EXPECT_EQ(lockAndLook(in("lock")), 0700);
  EXPECT_EQ(get(in("precious")), "kept");
  EXPECT_EQ(lockAndLook(in("lock"), 0640), 0640);
  EXPECT_EQ(lockAndLook(in("full")), 0) << "a directory with something in it stays";
  EXPECT_EQ(lockAndLook(in("missing/lock")), 0);
}

TEST(OsPortTest, AMissingProgramNameIsFound) {
  const char* own = __progname;
  detect_progname();
  EXPECT_EQ(__progname, own);
  __progname = nullptr;
  detect_progname();
  EXPECT_EQ(std::string(__progname), std::string(own).substr(0, 15)) << "as long as the kernel keeps it";
  __progname = own;
}

}  // namespace
