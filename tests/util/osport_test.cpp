#include "util/include/osport.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "tests/util/workers.h"

extern "C" const char* __progname;

/// A lock file in a folder of its own.
class LockFileTest : public testing::Test {
 protected:
  LockFileTest() : folder(mkdtemp(pattern)), path(folder + "/lock") { umask(0); }
  ~LockFileTest() override { EXPECT_EQ(system(("rm -r " + folder).c_str()), 0); }

  /// The permissions of the lock file, made and locked; 0 if that fails or it is no regular file.
  int lockAndLook(unsigned mode = 0) {
    int status = 99;
    const int fd = mode == 0 ? QtrLock(path.c_str(), &status) : QtrLock(path.c_str(), &status, mode);
    EXPECT_EQ(status, fd < 0 ? -1 : 0);
    if (fd < 0) return 0;
    close(fd);
    struct stat found {};
    lstat(path.c_str(), &found);
    return S_ISREG(found.st_mode) ? found.st_mode & 07777 : 0;
  }

  char pattern[24] = "/tmp/osport_test_XXXXXX";
  std::string folder, path;
};

TEST_F(LockFileTest, IsMadeAndLockedAndFreed) {
  EXPECT_EQ(lockAndLook(), 0700);
  EXPECT_EQ(lockAndLook(0640), 0640);
  int status = -1;
  const int fd = QtrLock(path.c_str(), &status);
  EXPECT_EQ(QtrLock(fd), 0) << "held by us";
  EXPECT_EQ(QtrUnlock(fd), 0);
  close(fd);
  EXPECT_EQ(QtrLock(fd), -1);
}

TEST_F(LockFileTest, TellsWhichOtherProcessHoldsIt) {
  int status = -1;
  close(QtrLock(path.c_str(), &status));
  const pid_t other = fork();
  if (other == 0) {
    if (QtrLock(path.c_str(), &status) >= 0 && status == 0) raise(SIGSTOP);
    _exit(1);
  }
  waitpid(other, &status, WUNTRACED);
  ASSERT_TRUE(WIFSTOPPED(status));
  const int fd = QtrLock(path.c_str(), &status);
  EXPECT_GE(fd, 0);
  EXPECT_EQ(status, other);
  kill(other, SIGKILL);
  waitpid(other, &status, 0);
  EXPECT_EQ(QtrLock(fd), 0);
  close(fd);
}

TEST_F(LockFileTest, TakesThePlaceOfWhateverIsNoFile) {
  const std::string precious = folder + "/precious";
  std::ofstream(precious) << "kept";
  ASSERT_EQ(symlink(precious.c_str(), path.c_str()), 0);
  EXPECT_EQ(lockAndLook(), 0700);
  struct stat found {};
  stat(precious.c_str(), &found);
  EXPECT_EQ(found.st_size, 4);

  remove(path.c_str());
  mkdir(path.c_str(), 0700);
  EXPECT_EQ(lockAndLook(), 0700);
  remove(path.c_str());
  mkdir(path.c_str(), 0700);
  std::ofstream(path + "/full") << "";
  EXPECT_EQ(lockAndLook(), 0) << "a directory with something in it stays";
  path += "/missing/lock";
  EXPECT_EQ(lockAndLook(), 0);
}

TEST(OsPortTest, ProgramName) {
  const char* own = __progname;
  detect_progname();
  EXPECT_EQ(__progname, own);
  __progname = nullptr;
  detect_progname();
  EXPECT_EQ(std::string(__progname), std::string(own).substr(0, 15)) << "as long as the kernel keeps it";
  __progname = own;
}
