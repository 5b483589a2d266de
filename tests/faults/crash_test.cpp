// Settings and the configuration while writers are killed: what a reader can see at any moment. A separate
// program, because a process's first write removes the files of dead writers.

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>

#include "tests/support/workers.h"
#include "tests/support/world_test.h"

using namespace testsupport;
using namespace vesk;

namespace {

const std::string kDir = "/var/velmora/";
const std::string kSite = kDir + "kset.site";

class CrashTest : public WorldTest {
 protected:
  void SetUp() override {
    WorldTest::SetUp();
    if (IsSkipped()) return;
    if (inChild([] { EXPECT_TRUE(stopBeforeChanges()); }) != 0)
      GTEST_SKIP() << "the kernel does not let a filter stop children";
    configure("log: FATAL\n");  // a log line would add many calls
  }

  static bool hasTemporaryFiles() { return namesIn(kDir).find(".KSET.TEMP") != std::string::npos; }

  /// Runs `work` in a child and stops it before its `nth` visible change. Returns 0 if it ended before.
  template <class Work>
  static pid_t stoppedBefore(int nth, Work work) {
    const pid_t child = fork();
    if (child == 0) {
      ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
      raise(SIGSTOP);
      if (!stopBeforeChanges()) _exit(77);
      work();
      _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESECCOMP | PTRACE_O_EXITKILL);
    for (int stops = 0; stops <= nth && WIFSTOPPED(status); ++stops) {
      ptrace(PTRACE_CONT, child, nullptr, nullptr);
      waitpid(child, &status, 0);
    }
    if (WIFSTOPPED(status)) return child;
    EXPECT_EQ(status, 0);
    return 0;
  }

  /// Kills `write` before each of its changes and then calls `killed`; in another run calls `overtake` at
  /// each of these points, and `ended` with the exit status. The last call of `killed` is for a complete run.
  static void atEachChange(const std::function<void()>& prepare, const std::function<void()>& write,
                           const std::function<void()>& killed, const std::function<void()>& overtake,
                           const std::function<void(int status)>& ended) {
    for (int stops = 0; !HasFatalFailure(); ++stops) {
      SCOPED_TRACE(stops);
      prepare();
      pid_t child = stoppedBefore(stops, write);
      if (child != 0) kill(child, SIGKILL), waitpid(child, nullptr, 0);
      killed();
      if (child == 0) return;
      prepare();
      child = stoppedBefore(stops, write);
      if (child == 0) continue;
      overtake();
      int status = 0;
      do {
        ptrace(PTRACE_CONT, child, nullptr, nullptr);
        waitpid(child, &status, 0);
      } while (WIFSTOPPED(status));
      ended(status);
    }
  }

 private:
  /// Makes the kernel notify the tracer before each call that changes names, contents, modes or locks.
  /// Between two such calls nothing changes for other processes, so no other moment needs a kill. Returns
  /// false if the kernel does not support it.
  static bool stopBeforeChanges() {
    std::vector<sock_filter> filter = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};
    for (const unsigned call : {
#ifdef SYS_open
             SYS_open, SYS_rename, SYS_unlink, SYS_mkdir, SYS_chmod,
#endif
#ifdef SYS_renameat
             SYS_renameat,
#endif
             SYS_openat, SYS_close, SYS_write, SYS_ftruncate, SYS_fsync, SYS_fchmod, SYS_fchmodat, SYS_fchown,
             SYS_fchownat, SYS_renameat2, SYS_unlinkat, SYS_mkdirat, SYS_flock}) {
      filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 1));
      filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRACE));
    }
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    const sock_fprog program = {static_cast<unsigned short>(filter.size()), filter.data()};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program, 0, 0) == 0;
  }
};

// A writer is killed before each of its changes, or overtaken by a process that cleans up.
TEST_F(CrashTest, AKilledWriterLeavesTheOldOrTheNewValueAndALiveOneIsLeftAlone) {
  createDataDir();
  put(kSite, "rolled back");
  KSets sets;
  sets.snapShot("");
  const std::pair<std::string, std::function<void()>> writers[] = {
      {"saved", [] { saveSetting("site", "saved", SETTING_PUBLIC, false, false); }},
      {"rolled back", [&] { sets.rollBack(""); }},
  };
  for (const auto& [value, write] : writers) {
    std::set<std::string> seen;
    int leftovers = 0;
    const auto prepare = [] { put(kSite, "old"), chmod(kSite.c_str(), 0644); };
    const auto killed = [&] {
      seen.insert(get(kSite));
      EXPECT_EQ(modeOf(kSite), S_IFREG | 0644u) << "closed to others";
      leftovers += hasTemporaryFiles();
      checkInChild([] { rewriteSettingFiles(); });
      ASSERT_FALSE(hasTemporaryFiles()) << "the next process cleans up";
    };
    const auto ended = [&value = value](int status) {
      ASSERT_EQ(status, 0) << "cleaned away";
      ASSERT_EQ(get(kSite), value);
    };
    atEachChange(
        prepare, write, killed, [] { CleanTempSettingFiles(kDir); }, ended);
    EXPECT_EQ(seen, (std::set<std::string>{"old", value}));
    EXPECT_GT(leftovers, 0) << "no kill hit the write";
  }
  const std::string directory = kDir + "dir.KSET.TEMP/";
  ASSERT_EQ(mkdir(directory.c_str(), 0755), 0);
  put(directory + "kset.site", "stays");
  for (const std::string& dir : {kDir, directory}) CleanTempSettingFiles(dir);
  EXPECT_EQ(get(directory + "kset.site"), "stays");
  EXPECT_FAILURE("NotFoundException|Cannot open directory /no/such/: No such file or directory",
                 CleanTempSettingFiles("/no/such/"));
}

// A writer is killed before each of its changes, or overtaken by one that takes its lock for stale.
TEST_F(CrashTest, ConcurrentSavesOfTheConfigurationNeverMix) {
  const RecordedPauses pauses;
  const MovedDay later(100);
  const std::string path = in("conf"), mine(5000, 'm');
  const auto text = [](const std::string& a, const std::string& b) { return "a: " + a + "\nb: " + b + "\n"; };
  const auto set = [&](const char* key, const std::string& value) {
    return Properties::update(path, [&](Properties& file) { return file.setString(key, value); });
  };
  const auto write = [&] {
    if (set("a", mine) != 0) _exit(1);
  };
  std::set<std::string> seen;
  const auto killed = [&] {
    const bool isNew = *seen.insert(get(path)).first == text(mine, "old");
    EXPECT_EQ(set("b", "theirs"), 0) << "after a death";
    ASSERT_EQ(get(path), text(isNew ? mine : "old", "theirs"));
    ASSERT_FALSE(std::filesystem::exists(path + ".new") || std::filesystem::exists(path + ".lock"));
  };
  const auto ended = [&](int status) {
    const std::string a = status == 0 ? mine : "old", after = get(path);
    ASSERT_TRUE(after == text(a, "old") || after == text(a, "theirs")) << "overtaken";
    std::filesystem::remove(path + ".lock");
  };
  atEachChange([&] { put(path, text("old", "old")); }, write, killed, [&] { set("b", "theirs"); }, ended);
  EXPECT_EQ(seen, (std::set<std::string>{text("old", "old"), text(mine, "old")}));
}

}  // namespace
