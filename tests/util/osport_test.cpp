#include "util/include/osport.h"

#include <fcntl.h>
#include <signal.h>

#include "tests/support/scratch_test.h"

extern "C" const char* __progname;

namespace {

class LockFileTest : public testsupport::ScratchTest {
 protected:
  void SetUp() override {
    ScratchTest::SetUp();
    path = in("lock");
  }

  /// The permissions of the lock file, made and locked; 0 if that fails or it is no regular file.
  int lockAndLook(unsigned mode = 0) {
    const mode_t mask = umask(0);
    int status = 99;
    const int fd = mode == 0 ? QtrLock(path.c_str(), &status) : QtrLock(path.c_str(), &status, mode);
    umask(mask);
    EXPECT_EQ(status, fd < 0 ? -1 : 0);
    if (fd < 0) return 0;
    close(fd);
    return S_ISREG(modeOf(path)) ? modeOf(path) & 07777 : 0;
  }

  std::string path;
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
  put(in("precious"), "kept");
  ASSERT_EQ(symlink(in("precious").c_str(), path.c_str()), 0);
  EXPECT_EQ(lockAndLook(), 0700);
  EXPECT_EQ(get(in("precious")), "kept");
  remove(path.c_str());
  mkdir(path.c_str(), 0700);
  EXPECT_EQ(lockAndLook(), 0700);
  remove(path.c_str());
  mkdir(path.c_str(), 0700);
  put(path + "/full", "");
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

}  // namespace
