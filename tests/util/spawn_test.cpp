#include <fcntl.h>
#include <signal.h>

#include <algorithm>

#include "tests/support/scratch_test.h"
#include "tests/util/workers.h"
#include "util/descriptors.h"
#include "util/include/osport.h"

namespace {

constexpr int kWait = 0, kDoNotWait = 1, kReplace = 2;
constexpr char kShell[] = "/bin/sh";

/// A pipe and what came through it.
struct Pipe {
  Pipe() { EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0); }
  ~Pipe() {
    close(ends[0]);
    closeWriter();
  }
  void closeWriter() {
    if (ends[1] >= 0) close(std::exchange(ends[1], -1));
  }
  std::string text() {
    closeWriter();
    char buffer[512];
    const ssize_t got = read(ends[0], buffer, sizeof buffer);
    return std::string(buffer, got > 0 ? got : 0);
  }

  int ends[2];
};

/// Runs a script in a shell.
int run(std::string script, std::vector<int> fds = {}, int mode = kWait, int timeout = -1, bool kill = false,
        bool emptyEnvironment = false, void (*callback)() = nullptr) {
  char name[] = "sh", option[] = "-c";
  char* argv[] = {name, option, script.data(), nullptr};
  return spawnfv_time_with_callback(mode, static_cast<int>(fds.size()), fds.data(), kShell, argv, timeout,
                                    kill, emptyEnvironment, callback);
}

/// Blocks until some child has ended, and leaves it to be collected.
siginfo_t awaitZombie() {
  siginfo_t info{};
  waitid(P_ALL, 0, &info, WEXITED | WNOWAIT);
  return info;
}

}  // namespace

/// Each test leaves no child and no descriptor.
class SpawnTest : public testsupport::ScratchTest {
 protected:
  void SetUp() override {
    ScratchTest::SetUp();
    null = open("/dev/null", O_RDWR | O_CLOEXEC);
  }
  void TearDown() override {
    close(null);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
    ScratchTest::TearDown();
  }

  int null = -1;
};

TEST_F(SpawnTest, ProgramsThatCannotRun) {
  std::string file = in("file");
  put(file, "no program");
  char* argv[] = {file.data(), nullptr};
  const struct {
    int mode;
    int count;
    const char* path;
    char** argv;
    int error;
  } rows[] = {
      {kWait, 0, "/nowhere/at/all", argv, ENOENT},
      {kReplace, 0, file.c_str(), argv, EACCES},
      {kDoNotWait, 0, nullptr, argv, EFAULT},
      {kWait, 0, kShell, nullptr, EFAULT},
      {kWait, 1, kShell, argv, EFAULT},
      {3, 0, kShell, argv, EINVAL},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(spawnfv(row.mode, row.count, nullptr, row.path, row.argv), -1);
    EXPECT_EQ(errno, row.error);
  }
  chmod(file.c_str(), 0700);
  EXPECT_EQ(WEXITSTATUS(spawnfv(kWait, 0, nullptr, file.c_str(), argv)), 256 - ENOEXEC);
}

TEST_F(SpawnTest, TheChildGetsExactlyTheDescriptorsAskedFor) {
  const int passed = open("/dev/null", O_RDONLY);
  std::vector<int> notOpen(40, -1);  // with an entry at the first number that is free for moving
  notOpen[1] = -2;
  notOpen[39] = 40;
  const struct {
    std::vector<int> fds;  // -2 stands for the pipe
    const char* expected;
  } rows[] = {
      {notOpen, "1\n"},
      {{null, -2}, "0\n1\n"},
      {{-1, -2, 999}, "1\n"},
      {{-2, -2, -1, null, -2}, "0\n1\n3\n4\n"},
  };
  for (const auto& row : rows) {
    Pipe pipe;
    std::vector<int> fds = row.fds;
    std::replace(fds.begin(), fds.end(), -2, pipe.ends[1]);
    EXPECT_EQ(run("ls /proc/$$/fd; exit 0", fds), 0);
    EXPECT_EQ(pipe.text(), row.expected);
  }
  EXPECT_EQ(run("test -e /proc/$$/fd/" + std::to_string(passed)), 0) << "all are kept if none are named";
  close(passed);
}

TEST_F(SpawnTest, EntriesMayOverlapTheirTargets) {
  Pipe out;
  const int input = dup(0), output = dup(1);
  dup2(out.ends[1], 0);
  dup2(null, 1);
  EXPECT_EQ(run("echo crossed", {1, 0}), 0);
  EXPECT_EQ(run("echo rotated >&2", {null, 1, 0}), 0);
  dup2(input, 0);
  dup2(output, 1);
  close(input);
  close(output);
  EXPECT_EQ(out.text(), "crossed\nrotated\n");
}

TEST_F(SpawnTest, EveryWayOfClosingKeepsWhatItShould) {
  using namespace vesk::descriptors;
  bool (*const ways[])(const int*, std::size_t) = {
      closeByRange, closeByListing,
      [](const int* kept, std::size_t count) { return closeOneByOne(kept, count, 400), true; }};
  for (auto* way : ways)
    testsupport::checkInChild([&] {
      const int kept[] = {0, 5, 300};
      for (int fd : {0, 3, 4, 5, 6, 299, 300, 301}) dup2(null, fd);
      bool right = way(kept, 3);
      for (int fd = 0; fd < 400; ++fd)
        right = right && (fcntl(fd, F_GETFD) >= 0) == (fd == 0 || fd == 5 || fd == 300);
      if (!right) _exit(1);  // there is nowhere left to say more
    });
}

TEST_F(SpawnTest, EnvironmentCallbackAndStatus) {
  const RecordedPauses pauses([](long) { awaitZombie(); });
  setenv("SPAWN_TEST_MARK", "set", 1);
  for (const bool empty : {false, true}) {
    Pipe out;
    const auto callback = [] { (void)!write(1, "called ", 7); };
    const int status =
        run("echo $SPAWN_TEST_MARK; exit 7", {null, out.ends[1]}, kWait, 1000, true, empty, callback);
    EXPECT_EQ(WEXITSTATUS(status), 7);
    EXPECT_EQ(out.text(), empty ? "called \n" : "called set\n");
  }
  unsetenv("SPAWN_TEST_MARK");
}

TEST_F(SpawnTest, ATimeOutLeavesTheChildToTheReaper) {
  for (const bool kill : {false, true}) {
    RecordedPauses pauses;
    Pipe input;
    EXPECT_EQ(run("read line; exit 9", {input.ends[0], null, null}, kWait, 3, kill), -1);
    EXPECT_EQ(errno, ETIMEDOUT);
    EXPECT_EQ(pauses.taken(), std::vector<long>(6, 500));
    if (!kill) spawnfv_reap();  // it runs on: nothing to collect, and no waiting
    input.closeWriter();
    const siginfo_t end = awaitZombie();
    EXPECT_EQ(end.si_code, kill ? CLD_KILLED : CLD_EXITED);
    EXPECT_EQ(end.si_status, kill ? SIGTERM : 9);
    spawnfv_reap();
  }
}

TEST_F(SpawnTest, ReapingCollectsWhatHasEndedAndNothingElse) {
  Pipe input;
  const pid_t waits = run("read line", {input.ends[0], null, null}, kDoNotWait);
  const pid_t ends = run("exit 0", {}, kDoNotWait);
  EXPECT_EQ(awaitZombie().si_pid, ends);
  siginfo_t stopped;
  ::kill(waits, SIGSTOP);
  waitid(P_PID, waits, &stopped, WSTOPPED | WNOWAIT);
  spawnfv_reap();
  EXPECT_EQ(::kill(ends, 0), -1);
  EXPECT_EQ(::kill(waits, SIGCONT), 0);
  input.closeWriter();
  EXPECT_EQ(awaitZombie().si_pid, waits) << "a child that has merely stopped was no zombie";
  spawnfv_reap();
}

TEST_F(SpawnTest, ReplacingThisProcess) {
  Pipe out;
  const pid_t child = fork();
  if (child == 0) run("echo $$; exit 5", {null, out.ends[1]}, kReplace);
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(WEXITSTATUS(status), 5);
  EXPECT_EQ(out.text(), std::to_string(child) + "\n");
}

TEST_F(SpawnTest, ACancelledWaiterLeavesItsChildToTheReaper) {
  Pipe input;
  cancelAt([&](auto point) {
    const RecordedPauses pauses([&](long) {
      point();
      vesk::Thread::yield();
    });
    run("read line", {input.ends[0], null, null}, kWait, 10);
  });
  input.closeWriter();
  awaitZombie();
  spawnfv_reap();
  cancelAt([](auto point) {
    vesk::Thread::disableKill();
    point();
    pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, nullptr);
    run("exit 0");
  });
  awaitZombie();
  spawnfv_reap();
}
