

#include "tests/support/scratch_test.h"
#include "tests/support/workers.h"
#include "util/process/descriptors.h"

namespace {

constexpr int kWait = 0, kDoNotWait = 1, kReplace = 2;
constexpr char kShell[] = "/bin/sh";

/// Runs a script in a shell.
int run(std::string script, std::vector<int> fds = {}, int mode = kWait, int timeout = -1, bool kill = false,
        bool emptyEnvironment = false, void (*callback)() = nullptr) {
  char name[] = "sh", option[] = "-c";
  char* argv[] = {name, option, script.data(), nullptr};
  return spawnfv_time_with_callback(mode, static_cast<int>(fds.size()), fds.data(), kShell, argv, timeout,
                                    kill, emptyEnvironment, callback);
}

/// Blocks until some child has ended, without reaping it.
siginfo_t awaitZombie() {
  siginfo_t info{};
  waitid(P_ALL, 0, &info, WEXITED | WNOWAIT);
  return info;
}

}  // namespace

/// No test leaves a child or a descriptor.
class SpawnTest : public testsupport::ScratchTest {
 protected:
  void SetUp() override {
    ScratchTest::SetUp();
    null = open("/dev/null", O_RDWR | O_CLOEXEC);
    output = open(in("output").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_EQ(pipe2(input, O_CLOEXEC), 0);
  }
  void TearDown() override {
    for (int fd : {null, output, input[0], input[1]}) close(fd);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
    ScratchTest::TearDown();
  }

  /// What was written since the last call.
  std::string written() {
    const std::string text = get(in("output"));
    return lseek(output, ftruncate(output, 0), SEEK_SET) == 0 ? text : "";
  }
  /// Lets a child that is reading a line continue.
  void answer() { EXPECT_EQ(write(input[1], "\n", 1), 1); }

  int null = -1, output = -1, input[2] = {-1, -1};
};

TEST_F(SpawnTest, AProgramThatCannotRunIsAnError) {
  std::string file = in("file");
  put(file, "no program");
  char* argv[] = {file.data(), nullptr};
  const std::tuple<int, int, const char*, char**, int> rows[] = {
      {kWait, 0, "/nowhere/at/all", argv, ENOENT},
      {kReplace, 0, file.c_str(), argv, EACCES},
      {kDoNotWait, 0, nullptr, argv, EFAULT},
      {kWait, 0, kShell, nullptr, EFAULT},
      {kWait, 1, kShell, argv, EFAULT},
      {3, 0, kShell, argv, EINVAL},
  };
  for (const auto& [mode, count, path, arguments, error] : rows) {
    EXPECT_EQ(spawnfv(mode, count, nullptr, path, arguments), -1);
    EXPECT_EQ(errno, error);
  }
  chmod(file.c_str(), 0700);
  EXPECT_EQ(WEXITSTATUS(spawnfv(kWait, 0, nullptr, file.c_str(), argv)), 256 - ENOEXEC);
}

TEST_F(SpawnTest, TheChildGetsExactlyTheDescriptorsAskedFor) {
  std::vector<int> notOpen(40, -1);  // with an entry at the first free number
  notOpen[1] = output;
  notOpen[39] = 40;
  const std::pair<std::vector<int>, const char*> rows[] = {
      {notOpen, "1\n"},
      {{-1, output, 999}, "1\n"},
      {{output, output, -1, null, output}, "0\n1\n3\n4\n"},
  };
  for (const auto& [fds, expected] : rows) {
    EXPECT_EQ(run("ls /proc/$$/fd; exit 0", fds), 0);
    EXPECT_EQ(written(), expected);
  }
  const int passed = open("/dev/null", O_RDONLY);
  EXPECT_EQ(run("test -e /proc/$$/fd/" + std::to_string(passed)), 0) << "all are kept if none are named";
  close(passed);
}

TEST_F(SpawnTest, EntriesMayOverlapTheirTargets) {
  testsupport::checkInChild([&] {
    dup2(output, 0);
    dup2(null, 1);
    EXPECT_EQ(run("echo crossed", {1, 0}), 0);
    EXPECT_EQ(run("echo rotated >&2", {null, 1, 0}), 0);
  });
  EXPECT_EQ(written(), "crossed\nrotated\n");
}

TEST_F(SpawnTest, EveryWayOfClosingKeepsTheListedDescriptors) {
  using namespace vesk::descriptors;
  bool (*const ways[])(const int*, std::size_t) = {
      closeByRange, closeByListing,
      [](const int* kept, std::size_t count) { return closeOneByOne(kept, count, 240), true; }};
  for (auto* way : ways)
    testsupport::checkInChild([&] {
      const int kept[] = {0, 5, 200};
      for (int fd : {0, 3, 4, 5, 6, 199, 200, 201}) dup2(null, fd);
      bool right = way(kept, 3);
      for (int fd = 0; fd < 240; ++fd)
        right = right && (fcntl(fd, F_GETFD) >= 0) == (fd == 0 || fd == 5 || fd == 200);
      if (!right) _exit(1);  // there is no stream to report to
    });
}

TEST_F(SpawnTest, AStoppedChildIsWaitedFor) {
  siginfo_t child;
  int pauses = 0;
  const RecordedPauses steps([&](long) {
    if (++pauses == 1) {
      answer();
      waitid(P_ALL, 0, &child, WSTOPPED | WNOWAIT);
    } else {
      ::kill(child.si_pid, SIGCONT);
      awaitZombie();
    }
  });
  EXPECT_EQ(WEXITSTATUS(run("read line; kill -STOP $$; exit 7", {input[0], null, null}, kWait, 1000)), 7);
  EXPECT_EQ(pauses, 2);
}

TEST_F(SpawnTest, TheChildHasItsEnvironmentAndCallbackAndItsStatusIsReturned) {
  const RecordedPauses pauses([](long) { awaitZombie(); });
  setenv("SPAWN_TEST_MARK", "set", 1);
  for (const bool empty : {false, true}) {
    const auto callback = [] { (void)!write(1, "called ", 7); };
    const int status =
        run("echo $SPAWN_TEST_MARK; exit 7", {null, output}, kWait, 1000, true, empty, callback);
    EXPECT_EQ(WEXITSTATUS(status), 7);
    EXPECT_EQ(written(), empty ? "called \n" : "called set\n");
  }
}

TEST_F(SpawnTest, ATimeOutLeavesTheChildToTheReaper) {
  for (const bool kill : {false, true}) {
    RecordedPauses pauses;
    EXPECT_EQ(run("read line; exit 9", {input[0], null, null}, kWait, 3, kill), -1);
    EXPECT_EQ(errno, ETIMEDOUT);
    EXPECT_EQ(pauses.taken(), std::vector<long>(6, 500));
    if (!kill) spawnfv_reap();  // still running: nothing to reap, and no wait
    answer();
    const siginfo_t end = awaitZombie();
    EXPECT_EQ(end.si_code, kill ? CLD_KILLED : CLD_EXITED);
    EXPECT_EQ(end.si_status, kill ? SIGTERM : 9);
    spawnfv_reap();
  }
}

TEST_F(SpawnTest, ReapingCollectsWhatHasEndedAndNothingElse) {
  const pid_t waits = run("read line", {input[0], null, null}, kDoNotWait);
  const pid_t ends = run("exit 0", {}, kDoNotWait);
  EXPECT_EQ(awaitZombie().si_pid, ends);
  siginfo_t stopped;
  ::kill(waits, SIGSTOP);
  waitid(P_PID, waits, &stopped, WSTOPPED | WNOWAIT);
  spawnfv_reap();
  EXPECT_EQ(::kill(ends, 0), -1);
  EXPECT_EQ(::kill(waits, SIGCONT), 0);
  answer();
  EXPECT_EQ(awaitZombie().si_pid, waits) << "a child that has merely stopped was no zombie";
  spawnfv_reap();
}

TEST_F(SpawnTest, AProgramCanReplaceThisProcess) {
  const int status = testsupport::inChild([&] { run("echo $PPID; exit 5", {null, output}, kReplace); });
  EXPECT_EQ(WEXITSTATUS(status), 5);
  EXPECT_EQ(written(), std::to_string(getpid()) + "\n");
}

TEST_F(SpawnTest, ACancelledWaiterLeavesItsChildToTheReaper) {
  for (const bool atTheStart : {false, true}) {
    cancelAt([&](auto point) {
      const RecordedPauses pauses([&](long) {
        if (!atTheStart) point();
        vesk::Thread::yield();
      });
      vesk::Thread::disableKill();
      if (atTheStart) point();
      pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, nullptr);
      run("read line", {input[0], null, null}, kWait, atTheStart ? -1 : 10);
    });
    answer();
    awaitZombie();
    spawnfv_reap();
  }
}
